#include "platform/prompts.h"

#include <atomic>

std::string MidiFilesDir, VelmoraFilesDir, DistributionFilesDir, FunctionFilesDir;

namespace platform {

namespace {

std::atomic<Prompts*> installedPrompts{nullptr};

int safestButton(uint32_t style) {
  switch (style & 0xF) {
    case MB_YESNOCANCEL:
      return IDCANCEL;
    case MB_YESNO:
      return IDNO;
    default:
      return IDOK;
  }
}

}  // namespace

void installPrompts(Prompts* prompts) { installedPrompts.store(prompts, std::memory_order_release); }

Prompts* prompts() { return installedPrompts.load(std::memory_order_acquire); }

int ShowMessageBox(const std::string& text, const std::string& title, uint32_t style) {
  Prompts* p = prompts();
  return p != nullptr ? p->messageBox(text, title, style) : safestButton(style);
}

WaitCursor::WaitCursor() {
  if (Prompts* p = prompts()) p->beginWaitCursor();
}

WaitCursor::~WaitCursor() {
  if (Prompts* p = prompts()) p->endWaitCursor();
}

int ScriptedPrompts::messageBox(const std::string& text, const std::string& title, uint32_t style) {
  shown_.push_back({Kind::MessageBox, text, title, style, {}});
  if (answers_.empty()) {
    ++unplanned_;
    return safestButton(style);
  }
  const int answer = answers_.front();
  answers_.pop_front();
  return answer;
}

std::optional<std::string> ScriptedPrompts::chooseFile(Kind kind, const FileDialog& dialog) {
  shown_.push_back({kind, dialog.title, {}, 0, dialog});
  if (files_.empty()) {
    ++unplanned_;
    return std::nullopt;
  }
  auto file = std::move(files_.front());
  files_.pop_front();
  return file;
}

std::optional<std::string> ScriptedPrompts::openFileName(const FileDialog& dialog) {
  return chooseFile(Kind::OpenFile, dialog);
}

std::optional<std::string> ScriptedPrompts::saveFileName(const FileDialog& dialog) {
  return chooseFile(Kind::SaveFile, dialog);
}

void ScriptedPrompts::beginWaitCursor() {
  if (waitDepth_++ == 0) ++waitShows_;
}

void ScriptedPrompts::endWaitCursor() {
  if (waitDepth_ > 0) --waitDepth_;
}

}  // namespace platform
