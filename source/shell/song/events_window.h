#pragma once
// The Events list: the events of the selected tracks, one per row in time
// order under a painted header, with the icon of the selected row's kind.
// Picking a row moves the song there; Insert, Delete and a double click edit
// the song. Its logic is song/events_list.h; this only shows it.
#include <array>

#include "shell/dialog_support.h"
#include "shell/song/painted_list.h"
#include "song/events_list.h"

class QRadioButton;

namespace shell {

// The inner list: one selected row at most, drawn by the view.
class EventsListWidget final : public PaintedList {
 public:
  explicit EventsListWidget(QWidget* parent);
  int count() override { return static_cast<int>(EventRowCount); }
  // No rows shown and none selected.
  void clear() override;
  std::vector<int> selectedItems() override;
  void setSelected(int item, bool selected) override;
  // Selects the row and scrolls it into sight; -1 takes the selection away.
  void setCurrent(int item) override;
  // Takes the row count again (a selection past the rows goes) and repaints.
  void repaint() override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  bool keepsKey(int key) const override;

 private:
  void select(int row);
  void paintRow(QPainter& painter, const std::array<int, 8>& edges, int row, int y);
  int selected_ = -1;
};

class EventsWindow final : public QWidget {
 public:
  explicit EventsWindow(QWidget* parent = nullptr);
  ~EventsWindow() override;
  EventsListWidget* list() const { return list_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  EventsListWidget* list_;
};

// The header's edges: the left edges of the icon cell and the seven items,
// and the right edge of the screen, where the time's title ends. A row's
// cells end at 600.
std::array<int, 9> EventColumnEdges(const QWidget* widget);

// Dialogs 120 and 124 to 128 on one event: its time, channel and numbers.
class EventDialog final : public CenteredDialog {
 public:
  EventDialog(QWidget* parent, uint32_t dialog, MidiEvent& event);
  QLineEdit* field(uint32_t id) const;
  void accept() override;

 private:
  uint32_t dialog_;
  MidiEvent& event_;
  std::vector<QLineEdit*> fields_;
};

// Dialog 129, "Event insert": the kind of event and the track it goes to.
class InsertEventDialog final : public CenteredDialog {
 public:
  explicit InsertEventDialog(QWidget* parent);
  QLineEdit* trackField() const { return track_; }
  QRadioButton* kindButton(int kind) const { return kinds_[static_cast<std::size_t>(kind)]; }
  // Inserts the event through its own dialog, then closes.
  void accept() override;

 private:
  std::array<QRadioButton*, 6> kinds_{};
  QLineEdit* track_;
};

// A double click: the selected row's event in its dialog, if its kind has one.
void EditEvent(QWidget* parent);
// Key Insert: dialog 129; its OK marks the current track touched.
void OpenInsertEventDialog(QWidget* parent);

}  // namespace shell
