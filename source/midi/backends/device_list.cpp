#include "midi/backends/device_list.h"

#include <algorithm>
#include <array>

using namespace platform;

namespace {

// Finds the backend that holds a device number, and its number there.
template <class Count>
MidiDevices* locate(const std::vector<MidiDevices*>& backends, uint32_t& id, Count&& count) {
  for (MidiDevices* backend : backends) {
    const uint32_t here = count(*backend);
    if (id < here) return backend;
    id -= here;
  }
  return nullptr;
}

MidiDevices* locateOut(const std::vector<MidiDevices*>& backends, uint32_t& id) {
  return locate(backends, id, [](MidiDevices& b) { return b.outCount(); });
}

MidiDevices* locateIn(const std::vector<MidiDevices*>& backends, uint32_t& id) {
  return locate(backends, id, [](MidiDevices& b) { return b.inCount(); });
}

}  // namespace

uint32_t DeviceList::outCount() {
  uint32_t count = 0;
  for (MidiDevices* backend : backends_) count += backend->outCount();
  return count;
}

uint32_t DeviceList::inCount() {
  uint32_t count = 0;
  for (MidiDevices* backend : backends_) count += backend->inCount();
  return count;
}

uint32_t DeviceList::outName(uint32_t id, std::string& name) {
  MidiDevices* backend = locateOut(backends_, id);
  return backend != nullptr ? backend->outName(id, name) : MMSYSERR_BADDEVICEID;
}

uint32_t DeviceList::inName(uint32_t id, std::string& name) {
  MidiDevices* backend = locateIn(backends_, id);
  return backend != nullptr ? backend->inName(id, name) : MMSYSERR_BADDEVICEID;
}

uint32_t DeviceList::outOpen(uint32_t id, MidiOutCallbackFn callback, uintptr_t instance,
                             std::unique_ptr<MidiOutPort>& port) {
  MidiDevices* backend = locateOut(backends_, id);
  return backend != nullptr ? backend->outOpen(id, callback, instance, port) : MMSYSERR_BADDEVICEID;
}

uint32_t DeviceList::inOpen(uint32_t id, MidiInCallbackFn callback, uintptr_t instance,
                            std::unique_ptr<MidiInPort>& port) {
  MidiDevices* backend = locateIn(backends_, id);
  return backend != nullptr ? backend->inOpen(id, callback, instance, port) : MMSYSERR_BADDEVICEID;
}

namespace {
constexpr std::array<RtMidi::Api, 4> SystemApis = {RtMidi::LINUX_ALSA, RtMidi::UNIX_JACK, RtMidi::MACOSX_CORE,
                                                   RtMidi::WINDOWS_MM};
}  // namespace

StandardDevices::StandardDevices(std::string soundFont)
    : synth(std::move(soundFont)), virtualInput({SystemApis.begin(), SystemApis.end()}, "Velmora") {
  list.add(&synth);
  list.add(&loopback);
  list.add(&virtualInput);
  std::vector<RtMidi::Api> apis;
  RtMidi::getCompiledApi(apis);
  for (RtMidi::Api api : SystemApis) {
    if (std::find(apis.begin(), apis.end(), api) == apis.end()) continue;
    system.push_back(std::make_unique<RtMidiDevices>(api, "Velmora"));
    list.add(system.back().get());
  }
}
