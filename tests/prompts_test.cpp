#include "platform/prompts.h"

#include <gtest/gtest.h>

using namespace platform;

namespace {

FileDialog velmoraFiles() {
  FileDialog dialog;
  dialog.title = "Open";
  dialog.filters = {{"Velmora Files(*.vlm)", "*.vlm"}, {"All files (*.*)", "*.*"}};
  dialog.mustExist = true;
  return dialog;
}

TEST(ScriptedPrompts, AMessageBoxIsRecordedAndGetsThePlannedAnswer) {
  ScriptedPrompts prompts;
  prompts.planAnswer(IDNO);
  EXPECT_EQ(prompts.messageBox("Keep take?", "Velmora", MB_YESNOCANCEL | MB_ICONQUESTION), IDNO);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].kind, ScriptedPrompts::Kind::MessageBox);
  EXPECT_EQ(prompts.shown()[0].text, "Keep take?");
  EXPECT_EQ(prompts.shown()[0].title, "Velmora");
  EXPECT_EQ(prompts.shown()[0].style, MB_YESNOCANCEL | MB_ICONQUESTION);
  EXPECT_EQ(prompts.unplanned(), 0);
}

TEST(ScriptedPrompts, AnUnplannedBoxAnswersWithItsSafestButtonAndIsCounted) {
  ScriptedPrompts prompts;
  EXPECT_EQ(prompts.messageBox("q", "Velmora", MB_YESNOCANCEL), IDCANCEL);
  EXPECT_EQ(prompts.messageBox("q", "Velmora", MB_YESNO), IDNO);
  EXPECT_EQ(prompts.messageBox("e", "Velmora", MB_OK | MB_ICONSTOP), IDOK);
  EXPECT_EQ(prompts.unplanned(), 3);
}

TEST(ScriptedPrompts, FileChoosersAreRecordedAndGetThePlannedFiles) {
  ScriptedPrompts prompts;
  prompts.planFile("/tmp/a.vlm");
  prompts.planFile(std::nullopt);
  EXPECT_EQ(prompts.openFileName(velmoraFiles()), std::optional<std::string>("/tmp/a.vlm"));
  EXPECT_EQ(prompts.saveFileName(velmoraFiles()), std::nullopt);
  ASSERT_EQ(prompts.shown().size(), 2u);
  EXPECT_EQ(prompts.shown()[0].kind, ScriptedPrompts::Kind::OpenFile);
  EXPECT_EQ(prompts.shown()[0].dialog.filters[0].label, "Velmora Files(*.vlm)");
  EXPECT_TRUE(prompts.shown()[0].dialog.mustExist);
  EXPECT_EQ(prompts.shown()[1].kind, ScriptedPrompts::Kind::SaveFile);
  EXPECT_EQ(prompts.unplanned(), 0);
  EXPECT_EQ(prompts.openFileName(velmoraFiles()), std::nullopt);
  EXPECT_EQ(prompts.unplanned(), 1);
}

TEST(ScriptedPrompts, TheWaitCursorNestsAndComesBack) {
  ScriptedPrompts prompts;
  installPrompts(&prompts);
  {
    WaitCursor outer;
    {
      WaitCursor inner;
      EXPECT_EQ(prompts.waitDepth(), 2);
    }
    EXPECT_EQ(prompts.waitDepth(), 1);
  }
  EXPECT_EQ(prompts.waitDepth(), 0);
  EXPECT_EQ(prompts.waitCursorShows(), 1);
  installPrompts(nullptr);
  WaitCursor withoutPrompts;  // harmless with none installed
}

TEST(Prompts, ABoxGoesToTheInstalledPromptsAndWithNoneAnswersItsSafestButton) {
  installPrompts(nullptr);
  EXPECT_EQ(ShowMessageBox("Save?", "Velmora", MB_YESNOCANCEL), IDCANCEL);
  EXPECT_EQ(ShowMessageBox("Keep take?", "Velmora", MB_YESNO | MB_ICONQUESTION), IDNO);
  EXPECT_EQ(ShowMessageBox("Full.", "Velmora", MB_ICONSTOP), IDOK);
  ScriptedPrompts prompts;
  installPrompts(&prompts);
  prompts.planAnswer(IDYES);
  EXPECT_EQ(ShowMessageBox("Keep take?", "Velmora", MB_YESNO), IDYES);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Keep take?");
  installPrompts(nullptr);
}

}  // namespace
