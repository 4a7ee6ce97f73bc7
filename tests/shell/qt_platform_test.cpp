// The Qt seams: the message loop on the UI thread, the settings on QSettings,
// the file dialogs' filters.
#include <unistd.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <thread>

#include "live/product_info.h"
#include "live/settings.h"
#include "platform/prompts.h"
#include "shell/qt_platform.h"
#include "shell/realtime_kit.h"

namespace {

class CountingTarget final : public platform::MessageTarget {
 public:
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) override {
    onUiThread = onUiThread && std::this_thread::get_id() == ui;
    last = msg;
    ++count;
    return static_cast<intptr_t>(param1 + 1);
  }
  std::thread::id ui = std::this_thread::get_id();
  std::atomic<int> count{0};
  std::atomic<uint32_t> last{0};
  std::atomic<bool> onUiThread{true};
};

TEST(QtMessageLoop, APostFromAnotherThreadIsDeliveredOnTheUiThreadInOrder) {
  shell::QtMessageLoop loop;
  CountingTarget target;
  std::thread poster([&] {
    for (uint32_t i = 0; i < 100; ++i) loop.post(&target, 20822, i, 0);
  });
  poster.join();
  EXPECT_EQ(target.count, 0) << "nothing runs on the posting thread";
  QApplication::processEvents();
  EXPECT_EQ(target.count, 100);
  EXPECT_TRUE(target.onUiThread);
}

TEST(QtMessageLoop, ASendFromAnotherThreadWaitsForTheUiThreadsAnswer) {
  shell::QtMessageLoop loop;
  CountingTarget target;
  std::atomic<intptr_t> answer{0};
  std::thread sender([&] { answer = loop.send(&target, 963, 41, 0); });
  while (target.count == 0) QApplication::processEvents(QEventLoop::AllEvents, 10);
  sender.join();
  EXPECT_EQ(answer, 42);
  EXPECT_TRUE(target.onUiThread);
}

TEST(QtMessageLoop, ASendWaitingWhenTheLoopClosesIsReleasedWithZero) {
  shell::QtMessageLoop loop;
  CountingTarget target;
  std::atomic<intptr_t> answer{-1};
  std::thread sender([&] { answer = loop.send(&target, 963, 41, 0); });
  while (loop.waiting() == 0) std::this_thread::yield();
  loop.close();
  sender.join();
  EXPECT_EQ(answer, 0);
  EXPECT_EQ(target.count, 0);
}

class QtSettings : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(user.isValid() && machine.isValid());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, user.path());
    QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope, machine.path());
  }
  // The later tests keep their settings where the test program put them.
  void TearDown() override {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, qEnvironmentVariable("XDG_CONFIG_HOME"));
  }
  QTemporaryDir user, machine;
  shell::QtSettingsStore store;
  const std::string key = "Software\\NQuillon\\Velmora\\0.1.0\\Settings";
};

TEST_F(QtSettings, BinaryAndTextValuesComeBackAsTheyWereWrittenAtEachLevel) {
  using platform::SettingsLevel;
  using platform::SettingsValue;
  EXPECT_FALSE(store.query(SettingsLevel::User, key, "Numerator").has_value());
  ASSERT_TRUE(store.set(SettingsLevel::User, key, "Numerator", SettingsValue::word(3)));
  ASSERT_TRUE(store.set(SettingsLevel::Machine, key, "Numerator", SettingsValue::word(7)));
  ASSERT_TRUE(store.set(SettingsLevel::User, key, "Key first beat", SettingsValue::byte(42)));
  ASSERT_TRUE(store.set(SettingsLevel::User, key, "Midi Files Dir", SettingsValue::text("/home/me/songs")));
  EXPECT_EQ(store.query(SettingsLevel::User, key, "Numerator"), SettingsValue::word(3));
  EXPECT_EQ(store.query(SettingsLevel::Machine, key, "Numerator"), SettingsValue::word(7));
  EXPECT_EQ(store.query(SettingsLevel::User, key, "Key first beat"), SettingsValue::byte(42));
  EXPECT_EQ(store.query(SettingsLevel::User, key, "Midi Files Dir"), SettingsValue::text("/home/me/songs"));
  EXPECT_FALSE(store.query(SettingsLevel::Machine, key, "Key first beat").has_value()) << "levels stay apart";
  EXPECT_TRUE(store.keyExists(SettingsLevel::User, key));
}

TEST_F(QtSettings, NumbersAreStoredAsReadableNumbersAndComeBackWithTheirSize) {
  using platform::SettingsLevel;
  using platform::SettingsValue;
  ASSERT_TRUE(store.set(SettingsLevel::User, key, "Numerator", SettingsValue::word(4)));
  ASSERT_TRUE(store.set(SettingsLevel::User, key, "Key first beat", SettingsValue::byte(42)));
  ASSERT_TRUE(store.set(SettingsLevel::User, key, "Midi Files Dir", SettingsValue::text("2024")));
  const QSettings file(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("NQuillon"),
                       QStringLiteral("Velmora"));
  QFile ini(file.fileName());
  ASSERT_TRUE(ini.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
  const QString text = QString::fromUtf8(ini.readAll());
  EXPECT_TRUE(text.contains(QStringLiteral("Settings\\Numerator=4\n"))) << text.toStdString();
  EXPECT_TRUE(text.contains(QStringLiteral("Settings\\Key%20first%20beat=42\n"))) << text.toStdString();
  EXPECT_FALSE(text.contains(QStringLiteral("@ByteArray"))) << text.toStdString();
  EXPECT_EQ(store.query(SettingsLevel::User, key, "Numerator"), SettingsValue::word(4));
  EXPECT_EQ(store.query(SettingsLevel::User, key, "Key first beat"), SettingsValue::byte(42));
  EXPECT_EQ(store.query(SettingsLevel::User, key, "Midi Files Dir"), SettingsValue::text("2024"))
      << "a folder named like a number stays a text";
}

TEST_F(QtSettings, TheOldByteStringsAreReadOnceAndWrittenBackAsNumbers) {
  {
    QSettings old(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("NQuillon"),
                  QString::fromStdString(ProductName()));
    old.beginGroup(QString::fromStdString(ProductVersion()) + QStringLiteral("/Settings"));
    old.setValue(QStringLiteral("Numerator"), QByteArray("\x03\0\0\0", 4));
    old.setValue(QStringLiteral("Key first beat"), QByteArray("\x30", 1));
    old.setValue(QStringLiteral("Midi Files Dir"), QStringLiteral("/home/me/songs"));
  }
  platform::installSettingsStore(&store);
  SettingsRecord record;
  LoadSettings(record);
  EXPECT_EQ(record.numerator, 3u);
  EXPECT_EQ(record.firstKey, 0x30);
  EXPECT_EQ(MidiFilesDir, "/home/me/songs");
  SaveSettings(record);  // as the program does when it exits
  platform::installSettingsStore(nullptr);
  const QSettings now(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("NQuillon"),
                      QString::fromStdString(ProductName()));
  QFile ini(now.fileName());
  ASSERT_TRUE(ini.open(QIODevice::ReadOnly));
  const QString text = QString::fromUtf8(ini.readAll());
  EXPECT_FALSE(text.contains(QStringLiteral("@ByteArray"))) << text.toStdString();
  EXPECT_TRUE(text.contains(QStringLiteral("Settings\\Numerator=3\n"))) << text.toStdString();
  EXPECT_TRUE(text.contains(QStringLiteral("Settings\\Key%20first%20beat=48\n"))) << text.toStdString();
  MidiFilesDir.clear();
}

TEST(FileDialogFilter, TheLabelsPatternsAreGivenOnceAndEveryFileMeansEveryFile) {
  platform::FileDialog dialog;
  dialog.filters = {{"Velmora Files(*.vlm)", "*.vlm"}, {"MIDI files (*.mid;*.mff)", "*.mid;*.mff"},
                    {"All files (*.*)", "*.*"}};
  EXPECT_EQ(shell::FileDialogFilter(dialog),
            QStringLiteral("Velmora Files (*.vlm);;MIDI files (*.mid *.mff);;All files (*)"));
}

TEST(FileDialogDefaultSuffix, AWildcardTakesTheFirstFiltersExtensionAndNeverAStar) {
  platform::FileDialog dialog;
  EXPECT_EQ(shell::FileDialogDefaultSuffix(dialog), QString()) << "no default extension, none added";
  dialog.defaultExtension = "vlm";
  EXPECT_EQ(shell::FileDialogDefaultSuffix(dialog), QStringLiteral("vlm"));
  dialog.defaultExtension = "*";
  EXPECT_EQ(shell::FileDialogDefaultSuffix(dialog), QString()) << "no filter to take it from";
  dialog.filters = {{"MIDI files (*.mid;*.mff)", "*.mid;*.mff"}, {"All files (*.*)", "*.*"}};
  EXPECT_EQ(shell::FileDialogDefaultSuffix(dialog), QStringLiteral("mid"));
  dialog.filters = {{"All files (*.*)", "*.*"}, {"MIDI files (*.mid)", "*.mid"}};
  EXPECT_EQ(shell::FileDialogDefaultSuffix(dialog), QString());
}

// Types a name into the file dialog that the prompt is about to show, and
// presses Enter; a dialog that cannot be driven so is closed unanswered.
void typeIntoTheFileDialog(const QString& name, int triesLeft = 200) {
  QTimer::singleShot(10, [name, triesLeft] {
    auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    if (chooser == nullptr) {
      if (triesLeft > 0) typeIntoTheFileDialog(name, triesLeft - 1);
      return;
    }
    auto* edit = chooser->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    if (edit == nullptr) {
      ADD_FAILURE() << "the file dialog has no name field";
      chooser->reject();
      return;
    }
    edit->clear();
    QTest::keyClicks(edit, name);
    QTest::keyClick(edit, Qt::Key_Return);
  });
}

platform::FileDialog songSaveDialog(const QTemporaryDir& folder) {
  platform::FileDialog dialog;
  dialog.title = "Save as";
  dialog.filters = {{"MIDI files (*.mid)", "*.mid"}};
  dialog.initialDirectory = folder.path().toStdString();
  dialog.defaultExtension = "*";
  dialog.mustExist = true;
  dialog.askToOverwrite = true;
  return dialog;
}

// The path that Save as gives for a name typed into its chooser, in an empty folder.
std::optional<std::string> savedAs(const QTemporaryDir& folder, const QString& typed) {
  shell::QtPrompts prompts;
  typeIntoTheFileDialog(typed);
  return prompts.saveFileName(songSaveDialog(folder));
}

TEST(QtPrompts, ASongNameTypedWithoutAnExtensionIsSavedAsMid) {
  QTemporaryDir folder;
  ASSERT_TRUE(folder.isValid());
  EXPECT_EQ(savedAs(folder, QStringLiteral("song")), folder.filePath(QStringLiteral("song.mid")).toStdString());
}

TEST(QtPrompts, ASaveNameTypedWithItsOwnExtensionKeepsIt) {
  QTemporaryDir folder;
  ASSERT_TRUE(folder.isValid());
  EXPECT_EQ(savedAs(folder, QStringLiteral("song.mff")), folder.filePath(QStringLiteral("song.mff")).toStdString());
}

TEST(RealtimeKit, AskedFromATimerLikeThreadItAnswersOrSaysWhyNot) {
  bool granted = false;
  std::string why;
  std::thread([&] { granted = shell::AskRealtimeKit(static_cast<uint64_t>(::gettid()), 10, why); }).join();
  if (!granted) {
    EXPECT_EQ(why.rfind("RealtimeKit ", 0), 0u) << why;
  } else {
    EXPECT_TRUE(why.empty());
  }
}

}  // namespace
