#pragma once
// The Controllers window's logic, apart from drawing: sixteen sliders, each
// bound to one controller on one channel, that send a Control Change at once
// when their main value moves. The window only talks: nothing it sends is
// recorded or stored, and nothing coming in moves a slider. UI thread only.

#include <array>
#include <cstdint>
#include <string>

#include "platform/message_loop.h"

inline constexpr int SliderSlots = 16;
// The two-value slider's requests: set and read its main value and its second value.
inline constexpr uint32_t SLIDER_SET_MAIN = 1224;
inline constexpr uint32_t SLIDER_GET_MAIN = 1225;
inline constexpr uint32_t SLIDER_SET_SECOND = 1226;
inline constexpr uint32_t SLIDER_GET_SECOND = 1227;
// A slider's report to its window: its id, and a code that is not 0 when the
// main value changed, 0 when the second value did.
inline constexpr uint32_t SLIDER_MAIN_CHANGED = 1;
inline constexpr uint32_t SLIDER_SECOND_CHANGED = 0;

// The control ids of slot i: its label, the second value (red), the slider
// and the sent value (blue).
inline constexpr uint32_t SlotLabelId(int slot) { return 116 + static_cast<uint32_t>(slot); }
inline constexpr uint32_t SlotSecondValueId(int slot) { return 100 + static_cast<uint32_t>(slot); }
inline constexpr uint32_t SlotSliderId(int slot) { return 132 + static_cast<uint32_t>(slot); }
inline constexpr uint32_t SlotSentValueId(int slot) { return 148 + static_cast<uint32_t>(slot); }

// The binding of each slider: controller 0..127, channel 0..15.
extern std::array<uint8_t, SliderSlots> SliderController, SliderChannel;
// The slot whose binding dialog is open.
extern int AssociateSlot;

// The name of controller n, beginning with its number: "7 Main Volume"; the
// numbers without a name read "n Undefined".
std::string ControllerName(int controller);
// "Channel 1" to "Channel 16" for channels 0 to 15.
std::string ChannelName(int channel);
// A slot's label: the first 10 characters of the controller's name, a blank,
// and the channel's name: "7 Main Vol Channel 1".
std::string SliderLabel(const std::string& controllerName, const std::string& channelName);

// What the window shows and holds, for the logic to drive.
class ControllersView {
 public:
  // The slot's two-value slider, which answers the four requests.
  virtual platform::MessageTarget* slider(int slot) = 0;
  // The text of one of the window's statics, by id.
  virtual void setStaticText(uint32_t id, const std::string& text) = 0;

 protected:
  ~ControllersView() = default;
};

// Creation: each slider at 90 (both values), bound to Main Volume on its own
// channel, labelled, and Main Volume 90 sent at once on every channel.
void OpenControllers(ControllersView& view);
// A slider's report, by its id (132..147): a main value is shown in blue and
// sent as one Control Change; a second value is shown in red, nothing sent.
void SliderReport(ControllersView& view, uint32_t id, uint32_t code);
// The slot whose label's rectangle holds a point of the window, or -1.
int SlotAtPoint(int x, int y);
// The binding dialog's selection at opening: always Main Volume on channel 1,
// whatever the slot is bound to.
inline constexpr int BindingDialogController = 7;
inline constexpr int BindingDialogChannel = 0;
// The binding dialog's OK: the slot takes the controller and channel, its
// label is rebuilt; nothing is sent until the slider next moves.
void BindSlot(ControllersView& view, int slot, int controller, int channel);
