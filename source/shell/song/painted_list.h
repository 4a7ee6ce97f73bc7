#pragma once
// The inner list of the Tracks manager and of the Events list: rows of one
// height drawn by the view, a vertical scroll bar that counts rows, and the
// list requests that the song's logic makes through platform::ListView.
#include <QAbstractScrollArea>

#include "platform/view_registry.h"

namespace shell {

class PaintedList : public QAbstractScrollArea, public platform::ListView {
 public:
  explicit PaintedList(QWidget* parent, const QString& name);
  int topIndex() override;
  void setTopIndex(int item) override;

  // The text height of the list's font plus 4.
  int rowHeight() const;
  // The row under a point of the viewport, or -1 below the last.
  int rowAt(QPoint at);

 protected:
  // The scroll bar's range and page from the row count and the height.
  void updateScrollRange();
  // Scrolls the least that brings a row into sight.
  void scrollIntoSight(int row);
  void resizeEvent(QResizeEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  // The keys the list answers itself win over the frame's shortcuts while it has the focus.
  bool event(QEvent* event) override;
  // Whether the list answers this key now; Home and End by default.
  virtual bool keepsKey(int key) const { return key == Qt::Key_Home || key == Qt::Key_End; }
};

}  // namespace shell
