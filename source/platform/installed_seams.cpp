#include "platform/installed_seams.h"

namespace platform {

InstalledSeams::InstalledSeams(const Seams& seams) : seams_(seams) {
  if (seams_.loop != nullptr) installMessageLoop(seams_.loop);
  if (seams_.timers != nullptr) installTimers(seams_.timers);
  if (seams_.devices != nullptr) installMidiDevices(seams_.devices);
  if (seams_.settings != nullptr) installSettingsStore(seams_.settings);
  if (seams_.prompts != nullptr) installPrompts(seams_.prompts);
}

InstalledSeams::~InstalledSeams() {
  if (seams_.prompts != nullptr) installPrompts(nullptr);
  if (seams_.settings != nullptr) installSettingsStore(nullptr);
  if (seams_.devices != nullptr) installMidiDevices(nullptr);
  if (seams_.timers != nullptr) installTimers(nullptr);
  if (seams_.loop != nullptr) installMessageLoop(nullptr);
}

}  // namespace platform
