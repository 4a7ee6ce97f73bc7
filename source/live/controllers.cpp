#include "live/controllers.h"

#include <map>

#include "midi/live_devices.h"
#include "midi/midi_out.h"

std::array<uint8_t, SliderSlots> SliderController{}, SliderChannel{};
int AssociateSlot = 0;

namespace {

constexpr uint8_t MainVolume = 7;
constexpr uint32_t StartValue = 90;

// The names that are not "n Undefined", by number; ranges share a name with a running number.
std::string namedController(int n) {
  static const std::map<int, const char*> names = {{1, "Modulation wheel"},
                                                   {2, "Breath Controller"},
                                                   {4, "Foot Controller"},
                                                   {5, "Portamento time"},
                                                   {6, "Data entry MSB"},
                                                   {7, "Main Volume"},
                                                   {8, "Balance"},
                                                   {10, "Pan"},
                                                   {11, "Expression Controller"},
                                                   {64, "Damper pedal(sustain)"},
                                                   {65, "Portamento"},
                                                   {66, "Sostenuto"},
                                                   {67, "Soft pedal"},
                                                   {68, "Undedined"},
                                                   {69, "Hold 2"},
                                                   {91, "External Effects depth"},
                                                   {92, "Tremolo depth"},
                                                   {93, "Chorus depth"},
                                                   {94, "Celeste(Dtune) depth"},
                                                   {95, "Phaser depth"},
                                                   {96, "Data increment"},
                                                   {97, "Data decrement"},
                                                   {98, "Non-Registered Parameter Number LBS"},
                                                   {99, "Non-Registered Parameter Number MSB"},
                                                   {100, "Registered Parameter Number LBS"},
                                                   {101, "Registered Parameter Number MBS"}};
  if (const auto found = names.find(n); found != names.end()) return found->second;
  if (n >= 16 && n <= 19) return "General-Purpose Controller #" + std::to_string(n - 15);
  if (n >= 80 && n <= 83) return "General-Purpose Controller #" + std::to_string(n - 75);
  if (n >= 32 && n <= 63) return "LSB for values 0-31";
  if (n >= 121 && n <= 127) return "Reserved for Channel Mode Messages";
  return "Undefined";
}

void sendControl(int slot, uint32_t value) {
  // With no output open the message has nowhere to go and is dropped.
  MidiOutNow(TheMidiOut, static_cast<uint8_t>(0xB0 | (SliderChannel[static_cast<std::size_t>(slot)] & 15)),
             SliderController[static_cast<std::size_t>(slot)], static_cast<uint8_t>(value & 0x7F));
}

void setLabel(ControllersView& view, int slot) {
  const auto i = static_cast<std::size_t>(slot);
  view.setStaticText(SlotLabelId(slot),
                     SliderLabel(ControllerName(SliderController[i]), ChannelName(SliderChannel[i])));
}

}  // namespace

std::string ControllerName(int controller) { return std::to_string(controller) + " " + namedController(controller); }

std::string ChannelName(int channel) { return "Channel " + std::to_string(channel + 1); }

std::string SliderLabel(const std::string& controllerName, const std::string& channelName) {
  return controllerName.substr(0, 10) + " " + channelName;
}

void OpenControllers(ControllersView& view) {
  for (int slot = 0; slot < SliderSlots; ++slot) {
    platform::MessageTarget* slider = view.slider(slot);
    platform::send(slider, SLIDER_SET_MAIN, StartValue, 0);
    platform::send(slider, SLIDER_SET_SECOND, StartValue, 0);
    SliderController[static_cast<std::size_t>(slot)] = MainVolume;
    SliderChannel[static_cast<std::size_t>(slot)] = static_cast<uint8_t>(slot);
    setLabel(view, slot);
    sendControl(slot, StartValue);
  }
}

void SliderReport(ControllersView& view, uint32_t id, uint32_t code) {
  if (id < SlotSliderId(0) || id >= SlotSliderId(SliderSlots)) return;
  const int slot = static_cast<int>(id - SlotSliderId(0));
  platform::MessageTarget* slider = view.slider(slot);
  if (code != SLIDER_SECOND_CHANGED) {
    const auto value = static_cast<uint32_t>(platform::send(slider, SLIDER_GET_MAIN, 0, 0));
    view.setStaticText(SlotSentValueId(slot), std::to_string(value));
    sendControl(slot, value);
    return;
  }
  view.setStaticText(SlotSecondValueId(slot), std::to_string(platform::send(slider, SLIDER_GET_SECOND, 0, 0)));
}

int SlotAtPoint(int x, int y) {
  const int row = y / 28;
  const int inRow = y % 28;
  if (y < 0 || row >= 8 || inRow < 1 || inRow > 26) return -1;
  if (x >= 1 && x <= 66) return row;
  if (x >= 321 && x <= 386) return row + 8;
  return -1;
}

void BindSlot(ControllersView& view, int slot, int controller, int channel) {
  if (slot < 0 || slot >= SliderSlots) return;
  SliderController[static_cast<std::size_t>(slot)] = static_cast<uint8_t>(controller & 0x7F);
  SliderChannel[static_cast<std::size_t>(slot)] = static_cast<uint8_t>(channel & 15);
  setLabel(view, slot);
}
