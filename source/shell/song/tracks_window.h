#pragma once
// The Tracks manager: the 256 song tracks as a table under a painted header,
// with a check cell that selects a track for the edits and the Events list,
// the caret row that is the current track, and the Tracks dialog ("Datos")
// behind a double click and Track > Properties.
#include <array>

#include "shell/dialog_support.h"
#include "shell/song/painted_list.h"
#include "song/song_store.h"

class QCheckBox;
class QComboBox;

namespace shell {

// The inner list: the rows, their selection and the caret, drawn by the view.
class TracksListWidget final : public PaintedList {
 public:
  explicit TracksListWidget(QWidget* parent);
  int count() override { return static_cast<int>(SongTrackCount); }
  // Takes every row's selection away.
  void clear() override;
  std::vector<int> selectedItems() override;
  void setSelected(int item, bool selected) override;
  void setCurrent(int item) override;
  void repaint() override;

  int caret() const { return caret_; }
  // Where the check cell ends and the first column begins.
  static int checkCellWidth();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool keepsKey(int key) const override;

 private:
  void press(QPoint at);
  void moveCaret(int row);
  void toggle(int row);
  void paintRow(QPainter& painter, const std::array<int, 13>& edges, int row, int y, bool focus);
  std::array<bool, SongTrackCount> selected_{};
  int caret_ = 0;
};

class TracksWindow final : public QWidget {
 public:
  explicit TracksWindow(QWidget* parent = nullptr);
  ~TracksWindow() override;
  TracksListWidget* list() const { return list_; }
  QSize sizeHint() const override { return {600, 156}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  TracksListWidget* list_;
};

// The column edges of the table, from the check cell to the right edge of
// the screen: edge i is the left of column i, edge 12 the right of Events.
std::array<int, 13> TrackColumnEdges(const QWidget* widget);

// Dialog 117, "Datos": the current track's name, Play, Key+, Vel+, Time+,
// Rep, Channel, Pan, Patch and Volume.
class TrackDialog final : public CenteredDialog {
 public:
  explicit TrackDialog(QWidget* parent);
  QLineEdit* field(uint32_t id) const;
  QCheckBox* play() const { return play_; }
  QComboBox* channel() const { return channel_; }
  void accept() override;

 private:
  std::array<QLineEdit*, 8> fields_{};
  QCheckBox* play_;
  QComboBox* channel_;
};

// The current track's dialog, from the manager or from Track > Properties.
void OpenTrackDialog(QWidget* parent);

}  // namespace shell
