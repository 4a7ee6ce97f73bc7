// The Banks window in the real frame: its list and buttons, the commands on
// the selected slot, the Bank Name dialog, and reopening.
#include <QAction>
#include <QDialog>
#include <QFontInfo>
#include <QLineEdit>
#include <QMdiSubWindow>

#include "generator/banks.h"
#include "generator/functions.h"
#include "midi/transport_words.h"
#include "shell/generator/banks_window.h"
#include "shell_bench.h"

namespace {

class BanksWindowTest : public ShellBench {
 protected:
  void TearDown() override {
    for (auto& slot : BankSlots) slot.reset();
    ShellBench::TearDown();
  }
  shell::BanksWindow& openBanks() {
    frame->command(CMD_VIEW_BANKS);
    deliver();
    return *static_cast<shell::BanksWindow*>(::BanksWindow);
  }
  static QString line(shell::BanksWindow& window, int row) { return window.list()->item(row)->text(); }
  static void select(shell::BanksWindow& window, int row) { window.list()->setCurrentRow(row); }
  // Answers the Bank Name dialog once it shows: the text typed, then OK.
  static void nameInTheDialog(const QString& name) {
    inNextDialog([name](QDialog& dialog) {
      EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Bank Name"));
      auto* field = dialog.findChild<QLineEdit*>(QString::number(ID_BANK_NAME_FIELD));
      ASSERT_NE(field, nullptr);
      QTest::keyClicks(field, name);
      dialog.accept();
    });
  }
};

TEST_F(BanksWindowTest, ViewBanksOpensAt510By195WithItsListAndButtonsAndOnlyOnce) {
  start();
  EXPECT_TRUE(menuEnabled(CMD_VIEW_BANKS));
  const auto views = frame->client()->subWindowList().size();
  auto& window = openBanks();
  ASSERT_EQ(BanksOpen, 1u);
  EXPECT_EQ(frame->client()->activeSubWindow()->geometry(), QRect(0, 0, 510, 195));
  EXPECT_EQ(window.list()->geometry(), QRect(6, 6, 400, 159));
  EXPECT_TRUE(QFontInfo(window.list()->font()).fixedPitch());
  ASSERT_EQ(window.list()->count(), 256);
  EXPECT_EQ(line(window, 0), QStringLiteral("  0   <empty>"));
  EXPECT_EQ(line(window, 255), QStringLiteral("255   <empty>"));
  EXPECT_EQ(window.list()->currentRow(), 0);
  const std::pair<uint32_t, const char*> captions[] = {
      {ID_BANK_RECEIVE, "Receive"}, {ID_BANK_SEND, "Send"}, {ID_BANK_SAVE, "Save bank"},
      {ID_BANK_LOAD, "Load bank"}, {ID_BANK_DELETE, "Delete"}};
  int y = 6;
  for (const auto& [id, caption] : captions) {
    EXPECT_EQ(window.button(id)->text(), QString::fromLatin1(caption));
    EXPECT_EQ(window.button(id)->geometry(), QRect(412, y, 82, 24));
    y += 26;
  }
  EXPECT_EQ(window.focusProxy(), window.list()) << "activating the window focuses the list";
  frame->command(CMD_VIEW_BANKS);
  deliver();
  EXPECT_EQ(frame->client()->subWindowList().size(), views + 1);
}

TEST_F(BanksWindowTest, ReceiveFillsTheSelectedLineAndSelectsItAgain) {
  start();
  auto& window = openBanks();
  select(window, 5);
  window.button(ID_BANK_RECEIVE)->click();
  EXPECT_EQ(line(window, 5), QStringLiteral("  5   <bank 5>"));
  EXPECT_NE(BankSlots[5], nullptr);
  EXPECT_EQ(window.list()->currentRow(), 5);
}

TEST_F(BanksWindowTest, SendMakesTheSlotTheLiveSetUpWhileTheGeneratorRuns) {
  start();
  auto& window = openBanks();
  Seed = 11;
  select(window, 2);
  window.button(ID_BANK_RECEIVE)->click();
  Seed = 12;
  click(200);  // the die
  ASSERT_EQ(Generating.load(), 1u);
  passes(30);
  window.button(ID_BANK_SEND)->click();
  EXPECT_EQ(Seed.load(), 11);
  EXPECT_EQ(FunctionIndex.load(), 0u);
  EXPECT_EQ(Generating.load(), 1u);
  click(200);
}

TEST_F(BanksWindowTest, ADoubleClickNamesTheLineAndReopeningShowsTheBankAgain) {
  start();
  auto& window = openBanks();
  select(window, 9);
  window.button(ID_BANK_RECEIVE)->click();
  nameInTheDialog(QStringLiteral("Strings in fifths"));
  const QRect row = window.list()->visualItemRect(window.list()->item(9));
  QWidget* viewport = window.list()->viewport();
  QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, row.center());
  QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, row.center());
  QTest::mouseDClick(viewport, Qt::LeftButton, Qt::NoModifier, row.center());
  EXPECT_EQ(line(window, 9), QStringLiteral("  9   Strings in fifths"));
  EXPECT_EQ(window.list()->currentRow(), 9);
  frame->command(24365);  // Close all
  deliver();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  ASSERT_EQ(BanksOpen, 0u);
  auto& reopened = openBanks();
  EXPECT_EQ(line(reopened, 9), QStringLiteral("  9   <bank 9>"));
  EXPECT_EQ(reopened.list()->currentRow(), 0);
}

TEST_F(BanksWindowTest, TheListsContextMenuReachesTheBankNameDialog) {
  start();
  auto& window = openBanks();
  select(window, 3);
  const QList<QAction*> actions = window.list()->actions();
  ASSERT_EQ(actions.size(), 1);
  EXPECT_EQ(window.list()->contextMenuPolicy(), Qt::ActionsContextMenu);
  nameInTheDialog(QStringLiteral("x"));
  actions[0]->trigger();
  EXPECT_EQ(line(window, 3), QStringLiteral("  3   x"));
  EXPECT_EQ(BankSlots[3], nullptr) << "a name is display text only";
}

TEST_F(BanksWindowTest, SaveBankOnAnEmptySlotSaysSoAndLeavesTheSelection) {
  start();
  auto& window = openBanks();
  select(window, 4);
  window.button(ID_BANK_SAVE)->click();
  ASSERT_FALSE(prompts.shown().empty());
  EXPECT_EQ(prompts.shown().back().text, "Attempting to save a blank bank");
  EXPECT_EQ(window.list()->currentRow(), 4);
}

}  // namespace
