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

#include "platform/shared_word.h"

namespace platform {

// A view with one refresh operation: it rebuilds itself from the globals.
class RefreshableView {
 public:
  virtual void refresh() = 0;

 protected:
  ~RefreshableView() = default;
};

// The inner list of the Tracks manager and the Events list.
class ListView {
 public:
  virtual int count() = 0;
  virtual void clear() = 0;
  virtual std::vector<int> selectedItems() = 0;
  virtual void setSelected(int item, bool selected) = 0;
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
  virtual void setHighlight(uint32_t start, uint32_t end) = 0;

 protected:
  ~LyricsEditView() = default;
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
extern platform::RefreshableView* DistributionsWindow;
extern platform::RefreshableView* FunctionsWindow;
extern platform::RefreshableView* BoardsWindow;
extern platform::RefreshableView* BanksWindow;

// Calls the view's refresh if its flag reads 1; what every refresh entry does first.
inline void RefreshIfOpen(const SharedWord<uint32_t>& open, platform::RefreshableView* view) {
  if (open == 1 && view != nullptr) view->refresh();
}

// Every open flag to 0 and every handle to null, as at start-up.
void ClearViewRegistry();
