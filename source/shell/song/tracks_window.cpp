#include "shell/song/tracks_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/command_ids.h"
#include "shell/controls.h"
#include "shell/song/list_painting.h"
#include "song/track_rows.h"
#include "song/tracks_manager.h"

namespace shell {

namespace {

constexpr int CheckMarkWidth = 13;  // the platform's check mark
constexpr std::array<int, 11> ColumnWidths = {40, 112, 33, 41, 32, 84, 39, 31, 30, 26, 38};
constexpr std::array<const char*, 12> ColumnHeaders = {"Track", "Name", "Play", "Key+", "Vel+", "Time+",
                                                       "Chn",   "Rep",  "Pan",  "Vol",  "Patch", "Events"};

QString cellText(int row, int column) {
  const auto track = static_cast<uint32_t>(row);
  if (column == 0) return QString::number(row + 1);
  if (column == 11) return QString::number(Tracks[track].count);
  if (column == 1) return QString::fromStdString(TrackNames[track].value_or(""));
  const TrackRow* r = TrackRowAt(track);
  if (r == nullptr) return {};
  const char* texts[] = {r->play, r->key, r->velocity, r->time, r->channel, r->repeats, r->pan, r->volume, r->patch};
  return QString::fromLatin1(texts[column - 2]);
}

Qt::Alignment cellAlignment(int column) {
  if (column == 1) return Qt::AlignLeft | Qt::AlignVCenter;
  if (column == 11) return Qt::AlignHCenter | Qt::AlignVCenter;
  return Qt::AlignRight | Qt::AlignVCenter;
}

void paintCheckCell(QPainter& painter, QRect cell, bool selected) {
  const QRect box(cell.left() + 3, cell.top() + (cell.height() - CheckMarkWidth) / 2, CheckMarkWidth - 1,
                  CheckMarkWidth - 1);
  painter.fillRect(cell, Qt::white);
  painter.setPen(QColor(128, 128, 128));
  painter.drawRect(box);
  if (!selected) return;
  QPen mark(Qt::black, 2);
  painter.setPen(mark);
  painter.drawPolyline(QPolygon({box.topLeft() + QPoint(3, 6), box.topLeft() + QPoint(5, 9),
                                 box.topLeft() + QPoint(10, 3)}));
}

}  // namespace

std::array<int, 13> TrackColumnEdges(const QWidget* widget) {
  std::array<int, 13> edges{};
  edges[0] = TracksListWidget::checkCellWidth();
  for (std::size_t c = 0; c < ColumnWidths.size(); ++c) edges[c + 1] = edges[c] + ColumnWidths[c];
  edges[12] = ListRightEdge(widget, edges[11] + 40);
  return edges;
}

// ---- the list ----

TracksListWidget::TracksListWidget(QWidget* parent) : PaintedList(parent, QStringLiteral("TracksList")) {
  updateScrollRange();
}

// Space is the list's while it can select the caret's track (the transport
// stopped, the track not empty); otherwise it plays and stops, as elsewhere.
bool TracksListWidget::keepsKey(int key) const {
  if (key == Qt::Key_Space) return caret_ >= 0 && TrackRowMayToggle(static_cast<uint32_t>(caret_));
  return PaintedList::keepsKey(key);
}

int TracksListWidget::checkCellWidth() { return CheckMarkWidth + 6; }

void TracksListWidget::clear() {
  selected_.fill(false);
  viewport()->update();
}

std::vector<int> TracksListWidget::selectedItems() {
  std::vector<int> rows;
  for (std::size_t r = 0; r < selected_.size(); ++r) {
    if (selected_[r]) rows.push_back(static_cast<int>(r));
  }
  return rows;
}

void TracksListWidget::setSelected(int item, bool selected) {
  if (item < 0 || item >= count()) return;
  selected_[static_cast<std::size_t>(item)] = selected;
  viewport()->update();
}

void TracksListWidget::setCurrent(int item) {
  if (item >= 0 && item < count()) moveCaret(item);
}

void TracksListWidget::repaint() { viewport()->update(); }

void TracksListWidget::paintEvent(QPaintEvent*) {
  QPainter painter(viewport());
  painter.fillRect(viewport()->rect(), Qt::white);
  const int h = rowHeight();
  const int top = verticalScrollBar()->value();
  const std::array<int, 13> edges = TrackColumnEdges(this);
  for (int row = top, y = 0; row < count() && y < viewport()->height(); ++row, y += h) {
    paintRow(painter, edges, row, y, hasFocus() && row == caret_);
  }
}

void TracksListWidget::paintRow(QPainter& painter, const std::array<int, 13>& edges, int row, int y, bool focus) {
  // The row painted as holding the focus is the current track: the caret carries RecordTrack along.
  if (focus) RecordTrack = static_cast<uint8_t>(row);
  const int h = rowHeight();
  paintCheckCell(painter, QRect(0, y, edges[0], h), selected_[static_cast<std::size_t>(row)]);
  PaintRowBackground(painter, QRect(edges[0], y, edges[12] - edges[0], h), focus);
  for (int column = 0; column < 12; ++column) {
    const QRect cell(edges[static_cast<std::size_t>(column)], y,
                     edges[static_cast<std::size_t>(column) + 1] - edges[static_cast<std::size_t>(column)], h);
    painter.setPen(Qt::black);
    painter.drawText(cell.adjusted(2, 0, -CellTextMargin, 0), cellAlignment(column), cellText(row, column));
    PaintCellFrame(painter, cell);
  }
}

void TracksListWidget::moveCaret(int row) {
  caret_ = std::clamp(row, 0, count() - 1);
  scrollIntoSight(caret_);
  viewport()->update();
}

void TracksListWidget::toggle(int row) {
  selected_[static_cast<std::size_t>(row)] = !selected_[static_cast<std::size_t>(row)];
  TrackSelectionChanged();
  viewport()->update();
}

void TracksListWidget::press(QPoint at) {
  const int row = rowAt(at);
  if (row < 0) return;
  // In the check cell a track with events toggles while the transport stands; elsewhere only the caret moves.
  if (at.x() < checkCellWidth() && TrackRowMayToggle(static_cast<uint32_t>(row))) toggle(row);
  moveCaret(row);
}

void TracksListWidget::mousePressEvent(QMouseEvent* event) {
  setFocus();
  if (event->button() == Qt::LeftButton) press(event->position().toPoint());
}

void TracksListWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  if (event->button() != Qt::LeftButton || rowAt(at) < 0) return;
  if (at.x() < checkCellWidth()) {
    press(at);  // a double click in the check cell is a second press
    return;
  }
  RecordTrack = static_cast<uint8_t>(caret_);
  OpenTrackDialog(this);
}

void TracksListWidget::keyPressEvent(QKeyEvent* event) {
  const int page = verticalScrollBar()->pageStep();
  switch (event->key()) {
    case Qt::Key_Space:
      if (TrackRowMayToggle(static_cast<uint32_t>(caret_))) toggle(caret_);
      return;
    case Qt::Key_Up: moveCaret(caret_ - 1); return;
    case Qt::Key_Down: moveCaret(caret_ + 1); return;
    case Qt::Key_PageUp: moveCaret(caret_ - page); return;
    case Qt::Key_PageDown: moveCaret(caret_ + page); return;
    case Qt::Key_Home: moveCaret(0); return;
    case Qt::Key_End: moveCaret(count() - 1); return;
    default: QAbstractScrollArea::keyPressEvent(event);
  }
}

// ---- the view ----

TracksWindow::TracksWindow(QWidget* parent) : QWidget(parent), list_(new TracksListWidget(this)) {
  setObjectName(QStringLiteral("TracksManagerWin"));
  setWindowTitle(QStringLiteral("Tracks"));
  UseListFont(this);
  TracksOpen = 1;
  ::TracksList = list_;
  // The selection outlives the view: the rows of SelectedTracks are marked again.
  for (int32_t i = 0; i < SelectedTrackCount; ++i) {
    list_->setSelected(static_cast<int>(SelectedTracks[static_cast<std::size_t>(i)]), true);
  }
  list_->setCurrent(0);
  setFocusProxy(list_);
}

TracksWindow::~TracksWindow() { TracksOpen = 0; }

void TracksWindow::resizeEvent(QResizeEvent*) {
  list_->setGeometry(0, ListHeaderHeight, width(), height() - ListHeaderHeight);
}

void TracksWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(QRect(0, 0, width(), ListHeaderHeight), QColor(192, 192, 192));
  const std::array<int, 13> edges = TrackColumnEdges(this);
  for (std::size_t c = 0; c < ColumnHeaders.size(); ++c) {
    PaintHeaderCell(painter, QRect(edges[c], 0, edges[c + 1] - edges[c], ListHeaderHeight),
                    QString::fromLatin1(ColumnHeaders[c]));
  }
}

// ---- the dialog ----

TrackDialog::TrackDialog(QWidget* parent) : CenteredDialog(parent, QStringLiteral("Datos")) {
  setObjectName(QString::number(DLG_TRACK));
  auto* form = new QFormLayout;
  const auto edit = [&](std::size_t slot, uint32_t id, const char* label, const std::string& text, int length) {
    auto* field = new QLineEdit(QString::fromStdString(text), this);
    field->setObjectName(QString::number(id));
    field->setMaxLength(length);
    field->setModified(false);
    fields_[slot] = field;
    form->addRow(QString::fromLatin1(label), field);
  };
  const TrackFieldTexts& t = TrackFields;
  edit(0, ID_TRACK_NAME, "Name:", t.name, 63);
  play_ = new QCheckBox(QStringLiteral("Play"), this);
  play_->setObjectName(QString::number(ID_TRACK_PLAY));
  play_->setChecked(TrackPlayChecked(RecordTrack));
  form->addRow(QString(), play_);
  edit(1, ID_TRACK_KEY, "Key+ :", t.key, 29);
  edit(2, ID_TRACK_VELOCITY, "Vel+ :", t.velocity, 29);
  edit(3, ID_TRACK_TIME, "Time+ :", t.time, 29);
  edit(4, ID_TRACK_REPEATS, "Rep :", t.repeats, 29);
  channel_ = new QComboBox(this);
  channel_->setObjectName(QString::number(ID_TRACK_CHANNEL));
  channel_->addItem(QStringLiteral("None"));
  for (int c = 1; c <= 16; ++c) channel_->addItem(QString::number(c));
  channel_->setCurrentIndex(TrackChannelItem(RecordTrack));
  form->addRow(QStringLiteral("Channel :"), channel_);
  edit(5, ID_TRACK_PAN, "Pan :", t.pan, 29);
  edit(6, ID_TRACK_PATCH, "Patch :", t.patch, 29);
  edit(7, ID_TRACK_VOLUME, "Volume :", t.volume, 29);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(OkCancelButtons(this));
}

QLineEdit* TrackDialog::field(uint32_t id) const { return FindField(this, id); }

void TrackDialog::accept() {
  const auto text = [this](uint32_t id) { return field(id)->text().toStdString(); };
  TrackDialogEntries entries;
  entries.name = text(ID_TRACK_NAME);
  entries.key = text(ID_TRACK_KEY);
  entries.velocity = text(ID_TRACK_VELOCITY);
  entries.time = text(ID_TRACK_TIME);
  entries.repeats = text(ID_TRACK_REPEATS);
  entries.pan = text(ID_TRACK_PAN);
  entries.patch = text(ID_TRACK_PATCH);
  entries.volume = text(ID_TRACK_VOLUME);
  entries.play = play_->isChecked();
  entries.channelItem = channel_->currentIndex();
  if (const uint32_t refused = AcceptTrackDialog(entries); refused != 0) {
    QLineEdit* wrong = field(refused);
    wrong->setText(QString::fromStdString(TrackFieldText(refused)));
    SelectField(wrong);
    return;
  }
  QDialog::accept();
}

void OpenTrackDialog(QWidget* parent) {
  BeforeTrackDialog();
  TrackDialog dialog(parent);
  if (dialog.exec() == QDialog::Accepted) AfterTrackDialog();
}

}  // namespace shell
