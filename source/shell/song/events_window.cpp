#include "shell/song/events_window.h"

#include <QApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QRadioButton>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/command_ids.h"
#include "shell/song/list_painting.h"

namespace shell {

namespace {

constexpr int IconCellWidth = 50;
constexpr std::array<int, 8> ItemEdges = {50, 130, 210, 250, 330, 370, 490, 600};

// The header's titles, each over the items from its first to the next title's.
struct HeaderTitle {
  std::size_t firstItem;
  const char* title;
};
constexpr std::array<HeaderTitle, 4> HeaderTitles = {
    {{0, "Channel"}, {1, "Kind"}, {3, "Value"}, {5, "Measure:Beat:Tick"}}};

// The selected row's icon by its number: a coloured badge naming the kind.
struct IconLook {
  uint32_t icon;
  const char* label;
  QRgb colour;
};
constexpr std::array<IconLook, 8> IconLooks = {{{215, "Note", 0x2e7d32},
                                                {214, "KeyA", 0x6a1b9a},
                                                {219, "Ctrl", 0x1565c0},
                                                {216, "Prog", 0xef6c00},
                                                {218, "ChnA", 0x8e24aa},
                                                {217, "Bend", 0xc62828},
                                                {220, "SysX", 0x455a64},
                                                {213, "Meta", 0x00838f}}};

void paintIcon(QPainter& painter, const QRect& cell, uint32_t icon) {
  const auto look = std::find_if(IconLooks.begin(), IconLooks.end(), [icon](const IconLook& l) { return l.icon == icon; });
  if (look == IconLooks.end()) return;
  const QRect badge = cell.adjusted(5, 2, -5, -3);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  QPainterPath path;
  path.addRoundedRect(QRectF(badge), 3, 3);
  painter.fillPath(path, QColor::fromRgb(look->colour));
  painter.setPen(Qt::white);
  QFont bold = painter.font();
  bold.setBold(true);
  painter.setFont(bold);
  painter.drawText(badge, Qt::AlignCenter, QString::fromLatin1(look->label));
  painter.restore();
}

// The row's text cut at its commas, one piece per item.
QStringList rowItems(const EventRow& row, int* kind) {
  return QString::fromLatin1(EventText(*row.event, kind)).split(QLatin1Char(','));
}

bool isMoveKey(int key) {
  switch (key) {
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_End:
    case Qt::Key_Home:
    case Qt::Key_Left:
    case Qt::Key_Up:
    case Qt::Key_Right:
    case Qt::Key_Down: return true;
    default: return false;
  }
}

}  // namespace

std::array<int, 9> EventColumnEdges(const QWidget* widget) {
  std::array<int, 9> edges{};
  edges[0] = 0;
  std::copy(ItemEdges.begin(), ItemEdges.end(), edges.begin() + 1);
  edges[8] = ListRightEdge(widget, ItemEdges.back());
  return edges;
}

// ---- the list ----

// While the list swallows its input (the transport running), Home and End go to the frame.
bool EventsListWidget::keepsKey(int key) const { return EventsListTakesInput() && PaintedList::keepsKey(key); }

EventsListWidget::EventsListWidget(QWidget* parent) : PaintedList(parent, QStringLiteral("EventsList")) {}

void EventsListWidget::clear() {
  selected_ = -1;
  repaint();
}

std::vector<int> EventsListWidget::selectedItems() {
  if (selected_ < 0 || selected_ >= count()) return {};
  return {selected_};
}

void EventsListWidget::setSelected(int item, bool selected) {
  if (selected && item >= 0 && item < count()) selected_ = item;
  if (!selected && item == selected_) selected_ = -1;
  viewport()->update();
}

void EventsListWidget::setCurrent(int item) {
  if (item < 0 || item >= count()) {
    selected_ = -1;
    viewport()->update();
    return;
  }
  select(item);
}

void EventsListWidget::repaint() {
  if (selected_ >= count()) selected_ = -1;
  updateScrollRange();
  viewport()->update();
}

void EventsListWidget::select(int row) {
  selected_ = std::clamp(row, 0, count() - 1);
  scrollIntoSight(selected_);
  viewport()->update();
}

void EventsListWidget::paintEvent(QPaintEvent*) {
  QPainter painter(viewport());
  painter.fillRect(viewport()->rect(), Qt::white);
  // The rows' cells end at item 6's 600; only the header runs on to the screen's edge.
  const std::array<int, 8>& edges = ItemEdges;
  const int h = rowHeight();
  const int rows = std::min(count(), static_cast<int>(EventRows.size()));
  for (int row = verticalScrollBar()->value(), y = 0; row < rows && y < viewport()->height(); ++row, y += h) {
    paintRow(painter, edges, row, y);
  }
}

void EventsListWidget::paintRow(QPainter& painter, const std::array<int, 8>& edges, int row, int y) {
  const int h = rowHeight();
  int kind = 0;
  const QStringList items = rowItems(EventRows[static_cast<std::size_t>(row)], &kind);
  const QRect iconCell(0, y, IconCellWidth, h);
  painter.fillRect(iconCell, Qt::white);
  if (row == selected_) paintIcon(painter, iconCell, EventIcon(kind));
  PaintRowBackground(painter, QRect(edges[0], y, edges[7] - edges[0], h), hasFocus() && row == selected_);
  for (std::size_t item = 0; item < 7; ++item) {
    const QRect cell(edges[item], y, edges[item + 1] - edges[item], h);
    painter.setPen(Qt::black);
    if (item < static_cast<std::size_t>(items.size())) {
      painter.drawText(cell.adjusted(0, 0, -CellTextMargin, 0), Qt::AlignCenter, items[static_cast<int>(item)]);
    }
    PaintCellFrame(painter, cell);
  }
}

// While the transport runs every press, release, double click and key is
// swallowed, so that no row changes under the play follow; the scroll bar
// and the wheel still move the list.

void EventsListWidget::mousePressEvent(QMouseEvent* event) {
  if (!EventsListTakesInput()) return;
  setFocus();
  const int row = rowAt(event->position().toPoint());
  if (event->button() == Qt::LeftButton && row >= 0) select(row);
}

void EventsListWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (!EventsListTakesInput()) return;
  if (event->button() == Qt::LeftButton) MoveToSelectedEventRow();
}

void EventsListWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  if (!EventsListTakesInput() || event->button() != Qt::LeftButton) return;
  EditEvent(this);
}

void EventsListWidget::keyPressEvent(QKeyEvent* event) {
  if (!EventsListTakesInput()) return;
  const int page = verticalScrollBar()->pageStep();
  const int at = selected_ < 0 ? 0 : selected_;
  switch (event->key()) {
    case Qt::Key_Insert: OpenInsertEventDialog(this); return;
    case Qt::Key_Delete: DeleteSelectedEventRow(); return;
    default: break;
  }
  if (count() == 0) return;
  switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Left: select(selected_ < 0 ? 0 : at - 1); return;
    case Qt::Key_Down:
    case Qt::Key_Right: select(selected_ < 0 ? 0 : at + 1); return;
    case Qt::Key_PageUp: select(at - page); return;
    case Qt::Key_PageDown: select(at + page); return;
    case Qt::Key_Home: select(0); return;
    case Qt::Key_End: select(count() - 1); return;
    default: QAbstractScrollArea::keyPressEvent(event);
  }
}

void EventsListWidget::keyReleaseEvent(QKeyEvent* event) {
  if (!EventsListTakesInput()) return;
  // A held key repeats its presses; the song moves once, when it is let go.
  if (isMoveKey(event->key()) && !event->isAutoRepeat()) MoveToSelectedEventRow();
}

// ---- the view ----

EventsWindow::EventsWindow(QWidget* parent) : QWidget(parent), list_(new EventsListWidget(this)) {
  setObjectName(QStringLiteral("TracksWin"));
  setWindowTitle(QStringLiteral("Events List"));
  UseListFont(this);
  EventsOpen = 1;
  ::EventsList = list_;
  DropEventRows();
  RefreshEventsList();
  setFocusProxy(list_);
}

EventsWindow::~EventsWindow() {
  EventsOpen = 0;
  DropEventRows();
}

void EventsWindow::resizeEvent(QResizeEvent*) {
  list_->setGeometry(0, ListHeaderHeight, width(), height() - ListHeaderHeight);
  // The follow turns the list a page at a time: the rows in sight, less 2.
  EventsRowsInSight = static_cast<uint32_t>(std::max(0, height() / list_->rowHeight() - 2));
}

void EventsWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(QRect(0, 0, width(), ListHeaderHeight), QColor(192, 192, 192));
  const std::array<int, 9> edges = EventColumnEdges(this);
  PaintHeaderCell(painter, QRect(0, 0, IconCellWidth, ListHeaderHeight), QString());
  for (std::size_t t = 0; t < HeaderTitles.size(); ++t) {
    const std::size_t from = HeaderTitles[t].firstItem + 1;
    const std::size_t to = t + 1 < HeaderTitles.size() ? HeaderTitles[t + 1].firstItem + 1 : edges.size() - 1;
    PaintHeaderCell(painter, QRect(edges[from], 0, edges[to] - edges[from], ListHeaderHeight),
                    QString::fromLatin1(HeaderTitles[t].title));
  }
}

// ---- the dialogs ----

EventDialog::EventDialog(QWidget* parent, uint32_t dialog, MidiEvent& event)
    : CenteredDialog(parent, QString::fromLatin1(EventDialogFormOf(dialog).title)), dialog_(dialog), event_(event) {
  setObjectName(QString::number(dialog));
  const EventFieldTexts texts = EventDialogTexts(dialog, event);
  auto* form = new QFormLayout;
  for (const EventDialogField& f : EventDialogFormOf(dialog).fields) {
    auto* edit = new QLineEdit(QString::fromStdString(texts.at(f.id)), this);
    edit->setObjectName(QString::number(f.id));
    edit->setMaxLength(f.id == ID_EVENT_TIME || f.id == ID_EVENT_END ? 63 : 15);
    fields_.push_back(edit);
    form->addRow(QString::fromUtf8(f.label), edit);
  }
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(OkCancelButtons(this));
}

QLineEdit* EventDialog::field(uint32_t id) const { return FindField(this, id); }

void EventDialog::accept() {
  EventFieldTexts entries;
  for (QLineEdit* f : fields_) entries[f->objectName().toUInt()] = f->text().toStdString();
  if (const uint32_t refused = AcceptEventDialog(dialog_, event_, entries); refused != 0) {
    SelectField(field(refused));  // the text stays as typed
    return;
  }
  QDialog::accept();
}

InsertEventDialog::InsertEventDialog(QWidget* parent) : CenteredDialog(parent, QStringLiteral("Event insert")) {
  setObjectName(QString::number(DLG_EVENT_INSERT));
  auto* layout = new QVBoxLayout(this);
  auto* group = new QGroupBox(this);
  auto* buttons = new QVBoxLayout(group);
  for (std::size_t k = 0; k < kinds_.size(); ++k) {
    kinds_[k] = new QRadioButton(QString::fromLatin1(InsertKindLabels[k]), group);
    kinds_[k]->setObjectName(QString::number(ID_INSERT_FIRST_KIND + k));
    buttons->addWidget(kinds_[k]);
  }
  kinds_[0]->setChecked(true);
  layout->addWidget(group);
  auto* form = new QFormLayout;
  track_ = new QLineEdit(QString::fromStdString(InsertTrackText()), this);
  track_->setObjectName(QString::number(ID_INSERT_TRACK));
  track_->setMaxLength(15);
  form->addRow(QStringLiteral("To track:"), track_);
  layout->addLayout(form);
  layout->addWidget(OkCancelButtons(this));
}

void InsertEventDialog::accept() {
  const auto checked = std::find_if(kinds_.begin(), kinds_.end(), [](QRadioButton* b) { return b->isChecked(); });
  EventInsert insert;
  PrepareInsertEvent(insert, track_->text().toStdString(), static_cast<int>(checked - kinds_.begin()));
  EventDialog dialog(this, insert.dialog, insert.events[0]);
  FinishInsertEvent(insert, dialog.exec() == QDialog::Accepted);
  QDialog::accept();
}

void EditEvent(QWidget* parent) {
  const EventEdit edit = BeginEditEvent();
  if (edit.dialog == 0) return;
  EventDialog dialog(parent, edit.dialog, *edit.event);
  EndEditEvent(edit, dialog.exec() == QDialog::Accepted);
}

void OpenInsertEventDialog(QWidget* parent) {
  InsertEventDialog dialog(parent);
  if (dialog.exec() == QDialog::Accepted) TouchTrack(RecordTrack);
}

}  // namespace shell
