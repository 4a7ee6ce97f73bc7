#include "shell/frame.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QMenuBar>
#include <QMdiSubWindow>
#include <QPainter>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include "generator/bank.h"
#include "generator/setup_files.h"
#include "live/settings_dialogs.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"
#include "shell/about_dialog.h"
#include "shell/control_bar.h"
#include "shell/controls.h"
#include "shell/dialogs.h"
#include "shell/generator/control_panel_window.h"
#include "shell/help.h"
#include "song/song_files.h"
#include "song/song_store.h"

namespace shell {

namespace {

struct MenuEntry {
  uint32_t id;  // 0: a separator; 1: the start of the submenu "&Clock...", 2: its end
  const char* label;
};

struct Menu {
  const char* title;
  std::vector<MenuEntry> entries;
};

const std::vector<Menu>& MenuBar() {
  static const std::vector<Menu> menus = {
      {"&File",
       {{24331, "&New"},
        {24332, "&Open..."},
        {24333, "&Save"},
        {24334, "S&ave as..."},
        {0, nullptr},
        {1616, "O&pen Velmora..."},
        {1617, "Save &Velmora as..."},
        {0, nullptr},
        {24310, "&Exit"}}},
      {"&View",
       {{1619, "&Tracks"},
        {1620, "&Events List"},
        {1621, "Controlers"},
        {1628, "Lyrics"},
        {0, nullptr},
        {1624, "Control Panel"},
        {1623, "Distributions"},
        {1622, "Functions"},
        {1625, "Boards"},
        {1626, "Banks"}}},
      {"&Realtime", {{1608, "&Quantize Record"}}},
      {"&Select",
       {{1184, "&From..."},
        {1185, "&To..."},
        {1190, "&From now"},
        {1191, "&To now"},
        {1192, "From &Home"},
        {1193, "To &End"}}},
      {"&Goto...", {{1178, "&Time..."}, {1194, "&Beginning"}, {1195, "&End"}}},
      {"&Edit",
       {{1186, "&Copy..."},
        {1187, "Cu&t..."},
        {1188, "&Paste..."},
        {0, nullptr},
        {1609, "&Quantize..."},
        {1614, "&Length..."},
        {1613, "&Transpose"},
        {1612, "&Velocity..."},
        {1611, "&Slide..."}}},
      {"&Track", {{1189, "&Delete"}, {1196, "&Properties"}, {1197, "&Select"}}},
      {"&Settings",
       {{1618, "&Link"},
        {1627, "&Seed"},
        {0, nullptr},
        {1606, "&Tempo..."},
        {1610, "&Meter..."},
        {1615, "Met&ronome..."},
        {0, nullptr},
        {1, "&Clock..."},
        {1600, "&Internal clock"},
        {1601, "&MIDI sync"},
        {2, nullptr},
        {1554, "&MIDI devices"},
        {1555, "MIDI t&hru"},
        {1607, "&Resolution..."},
        {0, nullptr},
        {1422, "&Input filters"},
        {1522, "&Output filters"}}},
      {"&Window", {{24361, "&Cascade"}, {24362, "&Tile vertical"}, {24364, "Arrange &icons"}, {24365, "Close &all"}}},
      {"&Help", {{1202, "&Contents"}, {1203, "Using &help"}, {2009, "&About..."}}},
  };
  return menus;
}

// The string table's hints, under their commands' ids.
const std::map<uint32_t, const char*>& Hints() {
  static const std::map<uint32_t, const char*> hints = {
      {24331, "Clean all sequencer data"},
      {24332, "Load a MIDI file from disk"},
      {24333, "Save MIDI file to disk"},
      {24334, "Save a MIDI file under a new name"},
      {24310, "Quit Velmora"},
      {1184, "Mark the selection beginning"},
      {1185, "Mark the selección end"},
      {1190, "Select from this time"},
      {1191, "Select to this time"},
      {1192, "Select from the begining"},
      {1193, "Select to the time of the last event"},
      {1178, "Go to specific time"},
      {1194, "Go to the bigining"},
      {1195, "Go to the time of the last event"},
      {1186, "Copy MIDI events"},
      {1187, "Cut MIDI events"},
      {1188, "Paste MIDI events"},
      {1609, "Round off the stsrting times and/or durations of MIDI events"},
      {1614, "Change events starting times and/or duration"},
      {1613, "Change pitches of Notes"},
      {1612, "Scale note velocities from one value to another over time"},
      {1611, "Slide events in time"},
      {1189, "Delete current track"},
      {1196, "Change the track settings"},
      {1197, "Select the entire track to make the edition posible"},
      {1606, "Set tempo"},
      {1615, "Change metronome settings"},
      {1600, "Follow the Velmora 's internal clock"},
      {1601, "Follow another device that is sending MIDI Sync to Velmora's MIDI In port"},
      {1554, "MIDI devices"},
      {1555, "Echo MIDI in to MIDI out"},
      {1607, "Timing resolution"},
      {1422, "Filter specific types of incoming MIDI events"},
      {1522, "Filter specific types of outcoming MIDI events"},
      {24361, "Cascade open windows"},
      {24362, "Tile open windows"},
      {24364, "Arrange iconic windows along bottom"},
      {24365, "Close all open windows"},
      {1202, "Help table of contents"},
      {1203, "How to use Help"},
      {2009, "About... "},
      {24360, "Arrange open windows"},
      {2008, "About... "},
      {65535, "Create, open, save Velmora/MIDI files or quit"},
  };
  return hints;
}

// The commands whose view or dialog is not part of Velmora yet: they stay gray.
bool NotYetAvailable(uint32_t id) {
  switch (id) {
    case 1619: case 1620: case 1621: case 1628: case 1623: case 1622: case 1625: case 1626:  // views
    case 1186: case 1187: case 1188: case 1609: case 1614: case 1613: case 1612: case 1611:  // edits
    case 1189: case 1196: case 1197:                                                         // tracks
      return true;
    default: return false;
  }
}

// The toolbar: 0 stands for a separator.
constexpr uint32_t ToolbarEntries[] = {0, 24331, 24332, 24333, 0, 1187, 1186, 1188};

// The toolbar's images, drawn: a page, a folder, a diskette, scissors, two pages, a clipboard.
QIcon ToolImage(uint32_t id) {
  QPixmap pixmap(32, 32);
  pixmap.fill(Qt::transparent);
  QPainter p(&pixmap);
  p.setRenderHint(QPainter::Antialiasing);
  p.scale(2, 2);
  const QPen ink(QColor(20, 20, 20), 1);
  p.setPen(ink);
  const QColor paper(255, 255, 255), folder(230, 190, 80), disk(60, 90, 170);
  const auto page = [&](QRectF r) {
    p.setBrush(paper);
    p.drawPolygon(QPolygonF{r.topLeft(), QPointF(r.right() - 3, r.top()), QPointF(r.right(), r.top() + 3),
                            r.bottomRight(), r.bottomLeft()});
  };
  switch (id) {
    case 24331: page(QRectF(3.5, 1.5, 9, 13)); break;
    case 24332:
      p.setBrush(folder);
      p.drawPolygon(QPolygonF{{1.5, 4.5}, {6, 4.5}, {7.5, 6}, {14.5, 6}, {14.5, 13.5}, {1.5, 13.5}});
      break;
    case 24333:
      p.setBrush(disk);
      p.drawRect(QRectF(2.5, 2.5, 11, 11));
      p.setBrush(paper);
      p.drawRect(QRectF(4.5, 2.5, 7, 4));
      p.drawRect(QRectF(4.5, 9, 7, 4.5));
      break;
    case 1187:
      p.setBrush(Qt::NoBrush);
      p.drawEllipse(QPointF(5, 12), 2.3, 2.3);
      p.drawEllipse(QPointF(11, 12), 2.3, 2.3);
      p.drawLine(QPointF(6.3, 10.2), QPointF(11, 2));
      p.drawLine(QPointF(9.7, 10.2), QPointF(5, 2));
      break;
    case 1186:
      page(QRectF(1.5, 1.5, 8, 10));
      page(QRectF(6.5, 4.5, 8, 10));
      break;
    case 1188:
      p.setBrush(folder);
      p.drawRect(QRectF(2.5, 2.5, 10, 12));
      p.setBrush(QColor(160, 160, 160));
      p.drawRect(QRectF(5, 1.5, 5, 2.5));
      page(QRectF(6.5, 6.5, 8, 8));
      break;
    default: break;
  }
  return QIcon(pixmap);
}

struct ViewPlace {
  uint32_t id;
  const char* title;
  const SharedWord<uint32_t>* open;
};

const ViewPlace ViewPlaces[] = {
    {1619, "Tracks", &TracksOpen},         {1620, "Events List", &EventsOpen},
    {1621, "Controlers", &ControllersOpen}, {1628, "Lyrics", &LyricsOpen},
    {1624, "Control Panel", &ControlPanelOpen}, {1623, "Distributions", &DistributionsOpen},
    {1622, "Functions", &FunctionsOpen},   {1625, "Boards", &BoardsOpen},
    {1626, "Banks", &BanksOpen},
};

}  // namespace

std::optional<bool> CommandAllowed(uint32_t id) {
  const bool idle = Playing != 1 && Recording != 1;
  const bool tracksSelected = SelectedTrackCount != 0;
  constexpr bool bufferFilled = false;  // nothing copies into an edit buffer yet
  switch (id) {
    case 1186: case 1187:
    case 1609: case 1614: case 1611: case 1613: case 1612:
      return idle && tracksSelected;
    case 1188: return idle && bufferFilled;
    case 24331: case 24332: case 24333: case 24334: case 24310:
    case 1615: case 1607: case 1189: case 1554: case 1600: case 1601: case 1197:
      return idle;
    default: return std::nullopt;
  }
}

QString CommandHint(uint32_t id) {
  const auto found = Hints().find(id);
  return found != Hints().end() ? QString::fromUtf8(found->second) : QString();
}

MainFrame::MainFrame() {
  setObjectName(QStringLiteral("velmora frame"));
  setWindowTitle(QStringLiteral("Velmora"));
  FrameWindow = this;
  createMenus();
  createToolbar();
  statusBar()->setSizeGripEnabled(true);  // blank for the life of the program
  auto* centre = new QWidget(this);
  auto* layout = new QVBoxLayout(centre);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  controlBar_ = new ControlBarWidget(centre);
  client_ = new QMdiArea(centre);
  client_->setObjectName(QStringLiteral("mdiclient"));
  client_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  client_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  client_->setBackground(QColor(128, 128, 128));
  layout->addWidget(controlBar_);
  layout->addWidget(client_, 1);
  setCentralWidget(centre);
}

MainFrame::~MainFrame() {
  delete controlBar_;  // its destruction saves the settings and closes the devices
  controlBar_ = nullptr;
  if (FrameWindow == this) FrameWindow = nullptr;
}

void MainFrame::createMenus() {
  for (const Menu& menu : MenuBar()) {
    QMenu* current = menuBar()->addMenu(QString::fromUtf8(menu.title));
    QMenu* top = current;
    for (const MenuEntry& entry : menu.entries) {
      if (entry.id == 0) {
        current->addSeparator();
      } else if (entry.id == 1) {
        current = top->addMenu(QString::fromUtf8(entry.label));
      } else if (entry.id == 2) {
        current = top;
      } else {
        QAction* action = current->addAction(QString::fromUtf8(entry.label));
        action->setObjectName(QString::number(entry.id));
        action->setCheckable(entry.id == 1600 || entry.id == 1601 || entry.id == 1618 || entry.id == 1555);
        action->setEnabled(!NotYetAvailable(entry.id));
        connect(action, &QAction::triggered, this, [this, id = entry.id] { command(id); });
        actions_[entry.id] = action;
      }
    }
    if (QString::fromUtf8(menu.title) == QStringLiteral("&Window")) {
      windowMenu_ = top;
      connect(windowMenu_, &QMenu::aboutToShow, this, [this] { fillWindowMenu(); });
    }
  }
  // The Edit menu starts gray until the gray rules first run.
  for (const uint32_t id : {1186u, 1187u, 1188u, 1609u, 1614u, 1613u, 1612u, 1611u}) actions_[id]->setEnabled(false);
}

void MainFrame::createToolbar() {
  toolbar_ = addToolBar(QStringLiteral("Toolbar"));
  toolbar_->setObjectName(QStringLiteral("1"));
  toolbar_->setIconSize(QSize(16, 16));
  toolbar_->setMovable(true);
  for (const uint32_t id : ToolbarEntries) {
    if (id == 0) {
      toolbar_->addSeparator();
      continue;
    }
    QAction* tool = toolbar_->addAction(ToolImage(id), CommandHint(id));
    tool->setObjectName(QString::number(id));
    tool->setToolTip(CommandHint(id));
    // Cut, Copy and Paste start indeterminate, shown gray.
    tool->setEnabled(id == 24331 || id == 24332 || id == 24333);
    connect(tool, &QAction::triggered, this, [this, id] { command(id); });
    tools_[id] = tool;
  }
}

QAction* MainFrame::menuAction(uint32_t id) const { return FindById(actions_, id); }

QAction* MainFrame::toolAction(uint32_t id) const { return FindById(tools_, id); }

// SetFrameTitle: "Velmora - [SongTitle]".
void MainFrame::showSongTitle(const std::string& songTitle) {
  setWindowTitle(QString::fromStdString("Velmora - [" + songTitle + "]"));
}

void MainFrame::checkMenuItem(uint32_t id, bool checked) {
  if (QAction* action = menuAction(id)) action->setChecked(checked);
}

void MainFrame::setCommandEnabled(uint32_t id, bool enabled, bool alsoToolbar) {
  if (QAction* action = menuAction(id)) action->setEnabled(enabled && !NotYetAvailable(id));
  if (!alsoToolbar) return;
  if (QAction* tool = toolAction(id)) tool->setEnabled(enabled && !NotYetAvailable(id));
}

void MainFrame::updateCommandStates() {
  for (const auto& [id, action] : actions_) {
    if (const std::optional<bool> allowed = CommandAllowed(id)) setCommandEnabled(id, *allowed, tools_.contains(id));
  }
}

QMdiSubWindow* MainFrame::openMdiChild(QWidget* view, int x, int y, int width, int height) {
  QMdiSubWindow* child = client_->addSubWindow(view);
  child->setAttribute(Qt::WA_DeleteOnClose);
  child->setWindowTitle(view->windowTitle());
  child->setGeometry(x, y, width, height);
  child->show();
  return child;
}

void MainFrame::activateMdiChildByTitle(const QString& title) {
  const QList<QMdiSubWindow*> children = client_->subWindowList(QMdiArea::StackingOrder);
  for (auto child = children.rbegin(); child != children.rend(); ++child) {
    if ((*child)->windowTitle() != title) continue;
    if ((*child)->isMinimized()) {
      (*child)->showNormal();
    } else {
      client_->setActiveSubWindow(*child);
      (*child)->raise();
    }
    return;
  }
}

void MainFrame::closeAllMdiChildren() {
  // Each view goes at once; none asks anything.
  const QList<QMdiSubWindow*> children = client_->subWindowList();
  for (QMdiSubWindow* child : children) {
    client_->removeSubWindow(child);
    delete child;
  }
}

void MainFrame::takeClientRect() { clientRect_ = QRect(QPoint(0, 0), client_->viewport()->size()); }

void MainFrame::openView(uint32_t id) {
  for (const ViewPlace& place : ViewPlaces) {
    if (place.id != id) continue;
    const QString title = QString::fromUtf8(place.title);
    if (*place.open == 1) {
      activateMdiChildByTitle(title);
      return;
    }
    if (id == 1624) openMdiChild(new shell::ControlPanelWindow, 0, 0, clientRect_.width(), clientRect_.height());
    return;
  }
}

void MainFrame::fillWindowMenu() {
  for (QAction* action : windowMenu_->actions()) {
    if (action->property("childWindow").isValid()) delete action;
  }
  const QList<QMdiSubWindow*> children = client_->subWindowList();
  if (!children.isEmpty()) windowMenu_->addSeparator()->setProperty("childWindow", true);
  int n = 0;
  for (QMdiSubWindow* child : children) {
    QAction* action = windowMenu_->addAction(QStringLiteral("&%1 %2").arg(n + 1).arg(child->windowTitle()));
    action->setObjectName(QString::number(4100 + n++));
    action->setProperty("childWindow", true);
    action->setCheckable(true);
    action->setChecked(child == client_->activeSubWindow());
    connect(action, &QAction::triggered, this, [this, child] {
      if (child->isMinimized()) child->showNormal();
      client_->setActiveSubWindow(child);
    });
  }
}

void MainFrame::arrangeIcons() {
  // Minimised views line up along the bottom of the client, from the left.
  int x = 0;
  for (QMdiSubWindow* child : client_->subWindowList()) {
    if (!child->isMinimized()) continue;
    child->move(x, client_->viewport()->height() - child->height());
    x += child->width();
  }
}

void MainFrame::command(uint32_t id) {
  if (const std::optional<bool> allowed = CommandAllowed(id); (allowed && !*allowed) || NotYetAvailable(id)) return;
  switch (id) {
    case CMD_NEW_SONG: NewSong(); return;
    case CMD_OPEN_SONG: OpenSongDialog(); return;
    case CMD_SAVE_SONG: SaveSong(); return;
    case CMD_SAVE_SONG_AS: SaveSongAs(); return;
    case 1616: ReadParameterFile(ControlBarWindow); return;
    case 1617: WriteParameterFile(ControlBarWindow); return;
    case 24310: close(); return;
    case 1608: MakeFieldDialog(this, 102)->exec(); return;
    case 1184: MakeFieldDialog(this, 106)->exec(); return;
    case 1185: MakeFieldDialog(this, 107)->exec(); return;
    case 1190: SelectFromNow(); return;
    case 1191: SelectToNow(); return;
    case 1192: SelectFromHome(); return;
    case 1193: SelectToEnd(); return;
    case 1178: MakeFieldDialog(this, 108)->exec(); return;
    case 1194: GoToBeginning(); return;
    case 1195: GoToSongEnd(); return;
    case CMD_MENU_LINK:
      platform::send(ControlBarWindow, WM_COMMAND, CMD_LINK, 0);
      platform::post(ControlBarControl(CMD_LINK), BUTTON_SET_STATE, Linked == 1 ? 1 : 0, 0);
      return;
    case 1627: MakeFieldDialog(this, 130)->exec(); return;
    case 1606: MakeFieldDialog(this, 105)->exec(); return;
    case 1610: {
      MeterDialog dialog(this);
      if (dialog.exec() == QDialog::Accepted) ApplyMeter();
      return;
    }
    case 1615: {
      MetronomeDialog dialog(this);
      if (dialog.exec() == QDialog::Accepted) ApplyMetronome();
      return;
    }
    case 1607: {
      const uint32_t old = SongResolution;
      if (MakeFieldDialog(this, 109)->exec() == QDialog::Accepted) RescaleSongTimes(old, SongResolution);
      return;
    }
    case 1554: {
      DevicesDialog dialog(this);
      dialog.exec();
      return;
    }
    case CMD_MENU_INTERNAL_CLOCK:
    case CMD_MENU_MIDI_SYNC:
    case CMD_MIDI_THRU: platform::send(ControlBarWindow, WM_COMMAND, id, 0); return;
    case 1422: FilterDialog(this, 103).exec(); return;
    case 1522: FilterDialog(this, 104).exec(); return;
    case 24361: client_->cascadeSubWindows(); return;
    case 24362: client_->tileSubWindows(); return;
    case 24364: arrangeIcons(); return;
    case 24365: closeAllMdiChildren(); return;
    case 1202: OpenManual(QString()); return;
    case 1203: OpenManual(QString::fromLatin1(ManualUsingHelp)); return;
    case 2009: {
      AboutDialog about(this);
      about.exec();
      return;
    }
    default: openView(id); return;
  }
}

void MainFrame::closeEvent(QCloseEvent* event) {
  if (SavePrompt() == 0) {
    event->ignore();
    return;
  }
  if (Generating == 1) {
    // The generator stops, and the close is asked again from the start.
    Generating = 0;
    event->ignore();
    QTimer::singleShot(0, this, [this] { close(); });
    return;
  }
  closeAllMdiChildren();
  event->accept();
}

}  // namespace shell
