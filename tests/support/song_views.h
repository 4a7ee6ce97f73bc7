#pragma once
// Fakes of the views that the song and the transport update: the Control
// Bar's fields and buttons, the frame, a list control and the lyrics edit.

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/command_ids.h"
#include "platform/message_loop.h"
#include "platform/view_registry.h"

class RecordingControlBar final : public platform::ControlBarView {
 public:
  void setFieldText(uint32_t id, const std::string& text) override { fields[id] = text; }
  void showTempo(double beatsPerMinute) override {
    tempo = beatsPerMinute;
    upDownTempo = beatsPerMinute;
  }
  void showTempoField(double beatsPerMinute) override { tempo = beatsPerMinute; }
  void enableControl(uint32_t id, bool on) override { enabled[id] = on; }
  void drawCounter(uint32_t ticks) override { counter.push_back(ticks); }

  std::map<uint32_t, std::string> fields;
  std::map<uint32_t, bool> enabled;
  double tempo = -1;        // the tempo last shown in its field
  double upDownTempo = -1;  // the tempo last shown on the up-down control too
  std::vector<uint32_t> counter;
};

class RecordingFrame final : public platform::FrameView {
 public:
  void showSongTitle(const std::string& text) override { songTitle = text; }
  void updateCommandStates() override { ++updates; }
  void checkMenuItem(uint32_t id, bool on) override { checked[id] = on; }
  std::string songTitle;
  int updates = 0;
  std::map<uint32_t, bool> checked;
};

class RecordingList final : public platform::ListView {
 public:
  int count() override { return rows; }
  void clear() override {
    rows = 0;
    ++clears;
  }
  std::vector<int> selectedItems() override { return {selected.begin(), selected.end()}; }
  void setSelected(int item, bool on) override {
    if (on) {
      selected.insert(item);
    } else {
      selected.erase(item);
    }
  }
  int topIndex() override { return top; }
  void setTopIndex(int item) override { top = item; }
  void setCurrent(int item) override { current = item; }
  void repaint() override { ++repaints; }

  int rows = 256;
  std::set<int> selected;
  int top = 0;
  int current = 0;
  int repaints = 0;
  int clears = 0;
};

class RecordingLyrics final : public platform::LyricsEditView {
 public:
  void setText(const std::string& value) override { text = value; }
  void setHighlight(uint32_t start, uint32_t end) override { highlights.emplace_back(start, end); }
  std::string text = "old text";
  std::vector<std::pair<uint32_t, uint32_t>> highlights;
};

// A Control Bar button that keeps the states it was set to.
class RecordingButton final : public platform::MessageTarget {
 public:
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) override {
    if (msg == BUTTON_SET_STATE) states.push_back(static_cast<int>(param1));
    return 0;
  }
  std::vector<int> states;
};
