#include "live/controllers.h"

#include <gtest/gtest.h>

#include <map>

#include "support/live_bench.h"

namespace {

// A two-value slider that keeps what it is set to.
class FakeSlider final : public platform::MessageTarget {
 public:
  intptr_t handleMessage(uint32_t msg, uintptr_t value, uintptr_t) override {
    switch (msg) {
      case SLIDER_SET_MAIN:
        main = static_cast<int>(value);
        return 0;
      case SLIDER_GET_MAIN:
        return main;
      case SLIDER_SET_SECOND:
        second = static_cast<int>(value);
        return 0;
      case SLIDER_GET_SECOND:
        return second;
      default:
        return 0;
    }
  }
  int main = -1, second = -1;
};

class FakeControllers final : public ControllersView {
 public:
  platform::MessageTarget* slider(int slot) override { return &sliders[static_cast<std::size_t>(slot)]; }
  void setStaticText(uint32_t id, const std::string& text) override { texts[id] = text; }
  std::array<FakeSlider, SliderSlots> sliders;
  std::map<uint32_t, std::string> texts;
};

class ControllersTest : public LiveBench {
 protected:
  void SetUp() override {
    LiveBench::SetUp();
    storeUser("Midi Thru", platform::SettingsValue::word(0));  // the loopback's input would echo every message
    start();
    devices.loopback.clearSent();
  }
  // The short messages sent on the output since the last look.
  std::vector<uint32_t> sent() {
    std::vector<uint32_t> words;
    for (const auto& s : devices.loopback.sent()) {
      if (s.bytes.empty()) words.push_back(s.word);
    }
    devices.loopback.clearSent();
    return words;
  }
  FakeControllers view;
};

TEST_F(ControllersTest, TheNamesAreSpelledAsTheTableHasThem) {
  EXPECT_EQ(ControllerName(0), "0 Undefined");
  EXPECT_EQ(ControllerName(1), "1 Modulation wheel");
  EXPECT_EQ(ControllerName(7), "7 Main Volume");
  EXPECT_EQ(ControllerName(11), "11 Expression Controller");
  EXPECT_EQ(ControllerName(16), "16 General-Purpose Controller #1");
  EXPECT_EQ(ControllerName(19), "19 General-Purpose Controller #4");
  EXPECT_EQ(ControllerName(20), "20 Undefined");
  EXPECT_EQ(ControllerName(32), "32 LSB for values 0-31");
  EXPECT_EQ(ControllerName(63), "63 LSB for values 0-31");
  EXPECT_EQ(ControllerName(64), "64 Damper pedal(sustain)");
  EXPECT_EQ(ControllerName(68), "68 Undedined");
  EXPECT_EQ(ControllerName(80), "80 General-Purpose Controller #5");
  EXPECT_EQ(ControllerName(83), "83 General-Purpose Controller #8");
  EXPECT_EQ(ControllerName(94), "94 Celeste(Dtune) depth");
  EXPECT_EQ(ControllerName(98), "98 Non-Registered Parameter Number LBS");
  EXPECT_EQ(ControllerName(101), "101 Registered Parameter Number MBS");
  EXPECT_EQ(ControllerName(120), "120 Undefined");
  EXPECT_EQ(ControllerName(121), "121 Reserved for Channel Mode Messages");
  EXPECT_EQ(ControllerName(127), "127 Reserved for Channel Mode Messages");
  EXPECT_EQ(ChannelName(0), "Channel 1");
  EXPECT_EQ(ChannelName(15), "Channel 16");
}

TEST_F(ControllersTest, ALabelIsTheNamesFirstTenCharactersAndTheChannel) {
  EXPECT_EQ(SliderLabel(ControllerName(7), ChannelName(0)), "7 Main Vol Channel 1");
  EXPECT_EQ(SliderLabel(ControllerName(11), ChannelName(15)), "11 Express Channel 16");
  EXPECT_EQ(SliderLabel(ControllerName(10), ChannelName(1)), "10 Pan Channel 2");
}

TEST_F(ControllersTest, OpeningSetsEverySliderTo90AndSendsMainVolume90OnEveryChannel) {
  OpenControllers(view);
  std::vector<uint32_t> expected;
  for (uint32_t c = 0; c < 16; ++c) expected.push_back((0xB0 | c) | 7u << 8 | 90u << 16);
  EXPECT_EQ(sent(), expected);
  for (int slot = 0; slot < SliderSlots; ++slot) {
    EXPECT_EQ(view.sliders[static_cast<std::size_t>(slot)].main, 90);
    EXPECT_EQ(view.sliders[static_cast<std::size_t>(slot)].second, 90);
    EXPECT_EQ(SliderController[static_cast<std::size_t>(slot)], 7);
    EXPECT_EQ(SliderChannel[static_cast<std::size_t>(slot)], slot);
  }
  EXPECT_EQ(view.texts[SlotLabelId(0)], "7 Main Vol Channel 1");
  EXPECT_EQ(view.texts[SlotLabelId(15)], "7 Main Vol Channel 16");
  EXPECT_FALSE(view.texts.contains(SlotSentValueId(0))) << "the values stay empty until the first report";
}

TEST_F(ControllersTest, AMainMoveSendsOneControlChangeAndShowsTheValueInBlue) {
  OpenControllers(view);
  sent();
  view.sliders[4].main = 33;
  SliderReport(view, SlotSliderId(4), SLIDER_MAIN_CHANGED);
  EXPECT_EQ(sent(), (std::vector<uint32_t>{0xB4u | 7u << 8 | 33u << 16}));
  EXPECT_EQ(view.texts[SlotSentValueId(4)], "33");
}

TEST_F(ControllersTest, ASecondValueMoveIsShownInRedAndSendsNothing) {
  OpenControllers(view);
  sent();
  view.sliders[2].second = 12;
  SliderReport(view, SlotSliderId(2), SLIDER_SECOND_CHANGED);
  EXPECT_TRUE(sent().empty());
  EXPECT_EQ(view.texts[SlotSecondValueId(2)], "12");
}

TEST_F(ControllersTest, ARebindSendsNothingAndTheNextMoveGoesToTheNewControllerAndChannel) {
  OpenControllers(view);
  sent();
  BindSlot(view, 3, 10, 1);
  EXPECT_TRUE(sent().empty());
  EXPECT_EQ(view.texts[SlotLabelId(3)], "10 Pan Channel 2");
  EXPECT_EQ(view.sliders[3].main, 90) << "the slider keeps its place";
  view.sliders[3].main = 64;
  SliderReport(view, SlotSliderId(3), SLIDER_MAIN_CHANGED);
  EXPECT_EQ(sent(), (std::vector<uint32_t>{0xB1u | 10u << 8 | 64u << 16}));
}

TEST_F(ControllersTest, TwoSlidersOnOneBindingBothSend) {
  OpenControllers(view);
  BindSlot(view, 5, 7, 0);
  sent();
  view.sliders[0].main = 10;
  view.sliders[5].main = 20;
  SliderReport(view, SlotSliderId(0), SLIDER_MAIN_CHANGED);
  SliderReport(view, SlotSliderId(5), SLIDER_MAIN_CHANGED);
  EXPECT_EQ(sent(), (std::vector<uint32_t>{0xB0u | 7u << 8 | 10u << 16, 0xB0u | 7u << 8 | 20u << 16}));
}

TEST_F(ControllersTest, OnlyTheLabelsRectanglesAnswerADoubleClick) {
  EXPECT_EQ(SlotAtPoint(1, 1), 0);
  EXPECT_EQ(SlotAtPoint(66, 26), 0);
  EXPECT_EQ(SlotAtPoint(30, 28 * 3 + 10), 3);
  EXPECT_EQ(SlotAtPoint(321, 28 * 7 + 1), 15);
  EXPECT_EQ(SlotAtPoint(0, 10), -1) << "left of the label";
  EXPECT_EQ(SlotAtPoint(30, 27), -1) << "between two strips";
  EXPECT_EQ(SlotAtPoint(200, 10), -1) << "on the slider";
  EXPECT_EQ(SlotAtPoint(30, 28 * 8 + 5), -1) << "below the last row";
}

TEST_F(ControllersTest, WithNoOutputOpenASendIsDropped) {
  stop();
  ASSERT_EQ(TheMidiOut, nullptr);
  OpenControllers(view);
  view.sliders[0].main = 1;
  SliderReport(view, SlotSliderId(0), SLIDER_MAIN_CHANGED);
  EXPECT_EQ(view.texts[SlotSentValueId(0)], "1");
}

}  // namespace
