// How Velmora ends other than by its Exit command: a signal closes the frame
// as its close button does, and the random source's internal error is shown
// in a box before the program ends.
#include <signal.h>

#include <QTest>
#include <cstdio>
#include <thread>

#include "random/trandom.h"
#include "shell/ending.h"
#include "shell_bench.h"

namespace {

class Ending : public ShellBench {};

TEST_F(Ending, SIGTERMClosesTheFrameAsItsCloseButtonDoes) {
  start();
  ASSERT_TRUE(frame->isVisible());
  {
    const shell::SignalCloser closer(frame.get());
    ASSERT_EQ(::raise(SIGTERM), 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !frame->isVisible(); }, 5000)) << "the frame closed";
  }
}

TEST_F(Ending, SIGHUPAndSIGINTCloseItToo) {
  for (const int signal : {SIGHUP, SIGINT}) {
    start();
    const shell::SignalCloser closer(frame.get());
    ASSERT_EQ(::raise(signal), 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !frame->isVisible(); }, 5000)) << signal;
    frame.reset();
    deliver();
  }
}

// Prompts that say on standard error what a box would show.
class SpokenPrompts final : public platform::Prompts {
 public:
  int messageBox(const std::string& text, const std::string& title, uint32_t) override {
    std::fprintf(stderr, "box '%s': %s\n", title.c_str(), text.c_str());
    return platform::IDOK;
  }
  std::optional<std::string> openFileName(const platform::FileDialog&) override { return std::nullopt; }
  std::optional<std::string> saveFileName(const platform::FileDialog&) override { return std::nullopt; }
  void beginWaitCursor() override {}
  void endWaitCursor() override {}
};

TEST(InternalError, OnTheTimersThreadItIsShownInABoxBeforeVelmoraEndsWithStatus1) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        SpokenPrompts prompts;
        platform::installPrompts(&prompts);
        shell::ShowInternalErrorsInABox();
        std::thread([] {
          tdseed(-60000);
          for (;;) tdrand();
        }).detach();
        QTest::qWait(10000);
      },
      ::testing::ExitedWithCode(1),
      "tdrand\\(\\) INTERNAL ERROR: source\\\\trandom\nbox 'Velmora': Velmora must close: the random source failed "
      "\\(tdrand\\(\\) INTERNAL ERROR: source\\\\trandom\\)\\. The seed of the set-up is outside the range it can "
      "take, -54780 to 2147428874\\.");
}

}  // namespace
