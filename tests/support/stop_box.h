#pragma once
// The one message box a refusal shows: its text, titled "Velmora", with a stop icon.

#include <gtest/gtest.h>

#include <string>

#include "platform/prompts.h"

inline void ExpectOneStopBox(const platform::ScriptedPrompts& prompts, const std::string& text) {
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, text);
  EXPECT_EQ(prompts.shown()[0].title, "Velmora");
  EXPECT_EQ(prompts.shown()[0].style, platform::MB_ICONSTOP);
}
