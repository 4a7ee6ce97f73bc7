// Velmora's start and end as a musician meets them: the device checks, the
// frame with the Control Panel, the settings read and saved, and the way down.
#include <QMdiSubWindow>
#include <QStatusBar>

#include "live/settings.h"
#include "midi/transport_words.h"
#include "shell/generator/control_panel_window.h"
#include "shell_bench.h"
#include "song/song_store.h"

namespace {

using platform::SettingsLevel;

class StartUp : public ShellBench {};

TEST_F(StartUp, AMachineWithoutAnInputIsToldSoAndVelmoraDoesNotStart) {
  install(1, 0);
  EXPECT_EQ(shell::StartVelmora({.splash = false, .maximized = false, .file = {}}), nullptr);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "No Midi In device on your system, or drivers have not yet been installed");
  EXPECT_EQ(prompts.shown()[0].title, "Velmora");
  EXPECT_EQ(prompts.shown()[0].style, platform::MB_OK) << "no icon";
  EXPECT_EQ(settings.valueCount(SettingsLevel::User), 0u) << "nothing was started";
}

TEST_F(StartUp, AMachineWithoutAnOutputIsToldSo) {
  install(0, 1);
  EXPECT_EQ(shell::StartVelmora({.splash = false, .maximized = false, .file = {}}), nullptr);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "No Midi Out device on your system, or drivers have not yet been installed");
}

TEST_F(StartUp, AMachineWithNeitherHearsBothInThisOrder) {
  install(0, 0);
  EXPECT_EQ(shell::StartVelmora({.splash = false, .maximized = false, .file = {}}), nullptr);
  ASSERT_EQ(prompts.shown().size(), 2u);
  EXPECT_NE(prompts.shown()[0].text.find("Midi In"), std::string::npos);
  EXPECT_NE(prompts.shown()[1].text.find("Midi Out"), std::string::npos);
}

TEST_F(StartUp, TheFrameShowsWithTheControlPanelFillingItsClient) {
  start();
  EXPECT_EQ(frame->windowTitle(), QStringLiteral("Velmora - [No name]"));
  EXPECT_EQ(ControlPanelOpen, 1u);
  const QList<QMdiSubWindow*> views = frame->client()->subWindowList();
  ASSERT_EQ(views.size(), 1);
  EXPECT_EQ(views[0]->windowTitle(), QStringLiteral("Control Panel"));
  EXPECT_EQ(views[0]->geometry(), QRect(QPoint(0, 0), frame->clientRect().size()));
  EXPECT_TRUE(frame->statusBar()->currentMessage().isEmpty());
}

TEST_F(StartUp, TheControlBarStartsOnTheInternalClockWithThruFromTheSettings) {
  start();
  EXPECT_TRUE(bar().button(108)->isDown());
  EXPECT_FALSE(bar().button(108)->isEnabled());
  EXPECT_TRUE(bar().button(107)->isEnabled());
  EXPECT_TRUE(frame->menuAction(1600)->isChecked());
  EXPECT_FALSE(frame->menuAction(1601)->isChecked());
  EXPECT_TRUE(frame->menuAction(1555)->isChecked()) << "MIDI thru is on by default";
  EXPECT_EQ(bar().field(1175)->text(), QStringLiteral("60.00"));
  EXPECT_EQ(bar().tempoControl()->position(), 60);
  EXPECT_EQ(bar().field(1180)->text(), QStringLiteral("1")) << "the first run's bar has one beat";
  EXPECT_EQ(bar().field(1181)->text(), QStringLiteral("4"));
  EXPECT_EQ(bar().counter()->text(), QStringLiteral("00001:01:000"));
}

TEST_F(StartUp, TheFirstRunWritesEveryDefaultAtBothLevelsAndTheExitSavesThem) {
  start();
  EXPECT_TRUE(settings.query(SettingsLevel::Machine, settingsKey(), "Numerator").has_value());
  EXPECT_TRUE(settings.query(SettingsLevel::User, settingsKey(), "Midi Thru").has_value());
  // The musician switches thru off; the exit saves it at the user's level only.
  frame->command(1555);
  deliver();
  frame->close();
  frame.reset();
  EXPECT_EQ(settings.query(SettingsLevel::User, settingsKey(), "Midi Thru"), platform::SettingsValue::word(0));
  EXPECT_EQ(settings.query(SettingsLevel::Machine, settingsKey(), "Midi Thru"), platform::SettingsValue::word(1));
}

TEST_F(StartUp, ANumeratorOutOfRangeStartsAsFourAndIsSavedSo) {
  settings.createKey(SettingsLevel::User, settingsKey());
  settings.set(SettingsLevel::User, settingsKey(), "Numerator", platform::SettingsValue::word(0));
  start();
  EXPECT_EQ(bar().field(1180)->text(), QStringLiteral("4"));
  frame.reset();
  EXPECT_EQ(settings.query(SettingsLevel::User, settingsKey(), "Numerator"), platform::SettingsValue::word(4));
}

TEST_F(StartUp, ClosingWithTheGeneratorOnAndAChangedSongAsksTwiceThenExits) {
  start();
  click(200);
  ASSERT_EQ(Generating, 1u);
  SongDirty = 1;
  prompts.planAnswer(platform::IDNO);
  prompts.planAnswer(platform::IDNO);
  frame->close();
  deliver();
  EXPECT_EQ(Generating, 0u);
  EXPECT_EQ(prompts.shown().size(), 2u) << "the save question comes again after the generator stops";
  EXPECT_FALSE(frame->isVisible());
  EXPECT_EQ(ControlPanelOpen, 0u) << "every view is closed";
}

TEST_F(StartUp, CancelAtTheSaveQuestionKeepsVelmoraRunning) {
  start();
  SongDirty = 1;
  prompts.planAnswer(platform::IDCANCEL);
  frame->close();
  deliver();
  EXPECT_TRUE(frame->isVisible());
  EXPECT_EQ(ControlPanelOpen, 1u);
  SongDirty = 0;
}

}  // namespace
