#pragma once
// The view registry: each view's open flag and its published handle.
//
// A view's own create handler sets both and its destroy handler clears the
// flag; nobody else writes them. Any code may test a flag (for the value 1),
// from any thread, and only while it reads 1 may the UI thread use the handle.
// Handles stay stale after a view closes, except LyricsEdit, which is zeroed.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/message_loop.h"
#include "platform/shared_word.h"

namespace platform {

// A view with one refresh operation: it rebuilds itself from the globals.
class RefreshableView {
 public:
  virtual void refresh() = 0;

 protected:
  ~RefreshableView() = default;
};

// The Distributions window: its refresh shows the Notes view again, and a new
// pitch mode retitles its Notes button (and its title label with Notes in view).
class DistributionsView : public RefreshableView {
 public:
  virtual void showColumnTitles() = 0;

 protected:
  ~DistributionsView() = default;
};

// The inner list of the Tracks manager and the Events list.
class ListView {
 public:
  virtual int count() = 0;
  virtual void clear() = 0;
  virtual std::vector<int> selectedItems() = 0;
  virtual void setSelected(int item, bool selected) = 0;
  virtual int topIndex() = 0;
  // -1 for none, as the list control takes it.
  virtual void setTopIndex(int item) = 0;
  virtual void setCurrent(int item) = 0;
  virtual void repaint() = 0;

 protected:
  ~ListView() = default;
};

// The Lyrics window's edit control.
class LyricsEditView {
 public:
  virtual void setText(const std::string& text) = 0;
  // Selects a span of the text and scrolls the caret into view, by the edit
  // control's rules: a start of NoSelection takes the selection away, and an
  // end of NoSelection runs to the end of the text.
  virtual void setHighlight(uint32_t start, uint32_t end) = 0;
  static constexpr uint32_t NoSelection = 0xFFFFFFFFu;

 protected:
  ~LyricsEditView() = default;
};

// The Control Bar's fields, counter and button states, as the transport and
// the song commands set them. UI thread only.
class ControlBarView {
 public:
  // The static fields: 1180 and 1181 meter, 2050 and 2051 region.
  virtual void setFieldText(uint32_t id, const std::string& text) = 0;
  // The tempo in beats per minute, in its field and on its up-down control.
  virtual void showTempo(double beatsPerMinute) = 0;
  // The tempo in its field alone, as when the up-down control itself moved.
  virtual void showTempoField(double beatsPerMinute) = 0;
  virtual void enableControl(uint32_t id, bool enabled) = 0;
  // Draws the position counter at a tick.
  virtual void drawCounter(uint32_t ticks) = 0;

 protected:
  ~ControlBarView() = default;
};

// The frame window: its title and the gray state of its menu and toolbar.
class FrameView {
 public:
  // The song's name, which the frame's title shows.
  virtual void showSongTitle(const std::string& songTitle) = 0;
  // Applies the gray rules to every command that the transport state governs.
  virtual void updateCommandStates() = 0;
  // Sets or clears the check mark of a menu entry.
  virtual void checkMenuItem(uint32_t id, bool checked) = 0;

 protected:
  ~FrameView() = default;
};

// A view fake that counts its refreshes.
class RecordingView final : public RefreshableView {
 public:
  void refresh() override { ++refreshes; }
  int refreshes = 0;
};

}  // namespace platform

extern SharedWord<uint32_t> TracksOpen, EventsOpen, ControllersOpen, LyricsOpen, ControlPanelOpen, DistributionsOpen,
    FunctionsOpen, BoardsOpen, BanksOpen;

extern platform::ListView* TracksList;
extern platform::ListView* EventsList;
extern platform::RefreshableView* LyricsWindow;
extern platform::LyricsEditView* LyricsEdit;
extern platform::RefreshableView* ControlPanelWindow;
extern platform::DistributionsView* DistributionsWindow;
extern platform::RefreshableView* FunctionsWindow;
extern platform::RefreshableView* BoardsWindow;
extern platform::RefreshableView* BanksWindow;
extern platform::ControlBarView* ControlBar;
extern platform::FrameView* FrameWindow;
// Rows of the Events list in sight, which its view works out on each change of size.
extern uint32_t EventsRowsInSight;

// The Control Bar, which takes the clock's and the input's notifications, and
// its buttons, to which others post BUTTON_SET_STATE. Null while there is none.
// The Control Bar sets both as it is made and unmade, on the UI thread; any
// thread may post to what they give.
extern platform::MessageTarget* ControlBarWindow;
platform::MessageTarget* ControlBarControl(uint32_t id);
void SetControlBarControl(uint32_t id, platform::MessageTarget* control);

// The frame's gray rules, applied after each change of the transport or the
// selection; nothing while there is no frame.
void UpdateCommandStates();

// Calls the view's refresh if its flag reads 1; what every refresh entry does first.
inline void RefreshIfOpen(const SharedWord<uint32_t>& open, platform::RefreshableView* view) {
  if (open == 1 && view != nullptr) view->refresh();
}

// Every open flag to 0 and every handle to null, as at start-up.
void ClearViewRegistry();
