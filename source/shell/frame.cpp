#include "shell/frame.h"

#include <algorithm>
#include <iterator>

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMdiSubWindow>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include "generator/bank.h"
#include "generator/setup_files.h"
#include "live/settings_dialogs.h"
#include "live/status_line.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"
#include "shell/about_dialog.h"
#include "shell/control_bar.h"
#include "shell/controls.h"
#include "shell/dialogs.h"
#include "shell/generator/banks_window.h"
#include "shell/generator/boards_window.h"
#include "shell/generator/control_panel_window.h"
#include "shell/generator/distributions_window.h"
#include "shell/generator/functions_window.h"
#include "shell/help.h"
#include "shell/recent_files.h"
#include "shell/shortcuts.h"
#include "shell/controllers_window.h"
#include "shell/song/events_window.h"
#include "shell/song/lyrics_window.h"
#include "shell/song/region_dialogs.h"
#include "shell/song/transform_dialog.h"
#include "shell/song/tracks_window.h"
#include "song/region_edits.h"
#include "song/song_files.h"
#include "song/song_store.h"
#include "song/tracks_manager.h"

namespace shell {

namespace {

struct MenuEntry {
  uint32_t id;  // 0: a separator; 1: the start of the submenu "&Clock...", 2: its end; 3: the recent files
  const char* label;
};

struct Menu {
  const char* title;
  std::vector<MenuEntry> entries;
};

const std::vector<Menu>& MenuBar() {
  static const std::vector<Menu> menus = {
      {"&File",
       {{CMD_NEW_SONG, "&New"},
        {CMD_OPEN_SONG, "&Open..."},
        {CMD_SAVE_SONG, "&Save"},
        {CMD_SAVE_SONG_AS, "S&ave as..."},
        {3, "Open &recent"},
        {0, nullptr},
        {CMD_OPEN_SETUP, "O&pen Velmora..."},
        {CMD_SAVE_SETUP_AS, "Save &Velmora as..."},
        {0, nullptr},
        {CMD_EXIT, "&Exit"}}},
      {"&View",
       {{CMD_VIEW_TRACKS, "&Tracks"},
        {CMD_VIEW_EVENTS, "&Events List"},
        {CMD_VIEW_CONTROLLERS, "Controlers"},
        {CMD_VIEW_LYRICS, "Lyrics"},
        {0, nullptr},
        {CMD_VIEW_CONTROL_PANEL, "Control Panel"},
        {CMD_VIEW_DISTRIBUTIONS, "Distributions"},
        {CMD_VIEW_FUNCTIONS, "Functions"},
        {CMD_VIEW_BOARDS, "Boards"},
        {CMD_VIEW_BANKS, "Banks"}}},
      {"&Realtime",
       {{CMD_QUANTIZE_RECORD_SETTINGS, "&Quantize Record"},
        {0, nullptr},
        {CMD_KEY_PLAY_STOP, "&Play / Stop"},
        {CMD_KEY_RECORD, "&Record"},
        {CMD_KEY_GENERATE, "&Generator on / off"}}},
      {"&Select",
       {{CMD_SELECT_FROM, "&From..."},
        {CMD_SELECT_TO, "&To..."},
        {CMD_SELECT_FROM_NOW, "&From now"},
        {CMD_SELECT_TO_NOW, "&To now"},
        {CMD_SELECT_FROM_HOME, "From &Home"},
        {CMD_SELECT_TO_END, "To &End"}}},
      {"&Goto...", {{CMD_GO_TO_TIME, "&Time..."}, {CMD_GO_TO_BEGINNING, "&Beginning"}, {CMD_GO_TO_SONG_END, "&End"}}},
      {"&Edit",
       {{CMD_COPY, "&Copy..."},
        {CMD_CUT, "Cu&t..."},
        {CMD_PASTE, "&Paste..."},
        {0, nullptr},
        {CMD_QUANTIZE, "&Quantize..."},
        {CMD_LENGTH, "&Length..."},
        {CMD_TRANSPOSE, "&Transpose"},
        {CMD_VELOCITY, "&Velocity..."},
        {CMD_SLIDE, "&Slide..."}}},
      {"&Track", {{CMD_TRACK_DELETE, "&Delete"}, {CMD_TRACK_PROPERTIES, "&Properties"}, {CMD_TRACK_SELECT, "&Select"}}},
      {"&Settings",
       {{CMD_MENU_LINK, "&Link"},
        {CMD_SEED, "&Seed"},
        {0, nullptr},
        {CMD_TEMPO, "&Tempo..."},
        {CMD_METER, "&Meter..."},
        {CMD_METRONOME_SETTINGS, "Met&ronome..."},
        {0, nullptr},
        {1, "&Clock..."},
        {CMD_MENU_INTERNAL_CLOCK, "&Internal clock"},
        {CMD_MENU_MIDI_SYNC, "&MIDI sync"},
        {2, nullptr},
        {CMD_MIDI_DEVICES, "&MIDI devices"},
        {CMD_MIDI_THRU, "MIDI t&hru"},
        {CMD_RESOLUTION, "&Resolution..."},
        {0, nullptr},
        {CMD_INPUT_FILTERS, "&Input filters"},
        {CMD_OUTPUT_FILTERS, "&Output filters"}}},
      {"&Window",
       {{CMD_CASCADE, "&Cascade"},
        {CMD_TILE, "&Tile vertical"},
        {CMD_ARRANGE_ICONS, "Arrange &icons"},
        {CMD_CLOSE_ALL, "Close &all"}}},
      {"&Help", {{CMD_HELP_CONTENTS, "&Contents"}, {CMD_HELP_USING, "Using &help"}, {CMD_ABOUT, "&About..."}}},
  };
  return menus;
}

// The string table's hints, under their commands' ids.
const std::map<uint32_t, const char*>& Hints() {
  static const std::map<uint32_t, const char*> hints = {
      {CMD_NEW_SONG, "Clean all sequencer data"},
      {CMD_OPEN_SONG, "Load a MIDI file from disk"},
      {CMD_SAVE_SONG, "Save MIDI file to disk"},
      {CMD_SAVE_SONG_AS, "Save a MIDI file under a new name"},
      {CMD_EXIT, "Quit Velmora"},
      {CMD_SELECT_FROM, "Mark the selection beginning"},
      {CMD_SELECT_TO, "Mark the selección end"},
      {CMD_SELECT_FROM_NOW, "Select from this time"},
      {CMD_SELECT_TO_NOW, "Select to this time"},
      {CMD_SELECT_FROM_HOME, "Select from the begining"},
      {CMD_SELECT_TO_END, "Select to the time of the last event"},
      {CMD_GO_TO_TIME, "Go to specific time"},
      {CMD_GO_TO_BEGINNING, "Go to the bigining"},
      {CMD_GO_TO_SONG_END, "Go to the time of the last event"},
      {CMD_COPY, "Copy MIDI events"},
      {CMD_CUT, "Cut MIDI events"},
      {CMD_PASTE, "Paste MIDI events"},
      {CMD_QUANTIZE, "Round off the stsrting times and/or durations of MIDI events"},
      {CMD_LENGTH, "Change events starting times and/or duration"},
      {CMD_TRANSPOSE, "Change pitches of Notes"},
      {CMD_VELOCITY, "Scale note velocities from one value to another over time"},
      {CMD_SLIDE, "Slide events in time"},
      {CMD_TRACK_DELETE, "Delete current track"},
      {CMD_TRACK_PROPERTIES, "Change the track settings"},
      {CMD_TRACK_SELECT, "Select the entire track to make the edition posible"},
      {CMD_TEMPO, "Set tempo"},
      {CMD_METRONOME_SETTINGS, "Change metronome settings"},
      {CMD_MENU_INTERNAL_CLOCK, "Follow the Velmora 's internal clock"},
      {CMD_MENU_MIDI_SYNC, "Follow another device that is sending MIDI Sync to Velmora's MIDI In port"},
      {CMD_MIDI_DEVICES, "MIDI devices"},
      {CMD_MIDI_THRU, "Echo MIDI in to MIDI out"},
      {CMD_RESOLUTION, "Timing resolution"},
      {CMD_INPUT_FILTERS, "Filter specific types of incoming MIDI events"},
      {CMD_OUTPUT_FILTERS, "Filter specific types of outcoming MIDI events"},
      {CMD_CASCADE, "Cascade open windows"},
      {CMD_TILE, "Tile open windows"},
      {CMD_ARRANGE_ICONS, "Arrange iconic windows along bottom"},
      {CMD_CLOSE_ALL, "Close all open windows"},
      {CMD_HELP_CONTENTS, "Help table of contents"},
      {CMD_HELP_USING, "How to use Help"},
      {CMD_ABOUT, "About... "},
      {CMD_ARRANGE, "Arrange open windows"},
      {CMD_ABOUT_HINT, "About... "},
      {CMD_FILE_MENU_HINT, "Create, open, save Velmora/MIDI files or quit"},
  };
  return hints;
}

// The edit commands, which a region of selected tracks needs.
constexpr uint32_t EditCommands[] = {CMD_COPY,   CMD_CUT,       CMD_PASTE,    CMD_QUANTIZE,
                                     CMD_LENGTH, CMD_TRANSPOSE, CMD_VELOCITY, CMD_SLIDE};

// The commands that only a stopped transport allows.
constexpr uint32_t IdleCommands[] = {CMD_NEW_SONG,     CMD_OPEN_SONG,           CMD_SAVE_SONG,      CMD_SAVE_SONG_AS,
                                     CMD_EXIT,         CMD_METRONOME_SETTINGS,  CMD_RESOLUTION,     CMD_TRACK_DELETE,
                                     CMD_MIDI_DEVICES, CMD_MENU_INTERNAL_CLOCK, CMD_MENU_MIDI_SYNC, CMD_TRACK_SELECT};

// The menu entries with a check mark.
constexpr uint32_t CheckedCommands[] = {CMD_MENU_INTERNAL_CLOCK, CMD_MENU_MIDI_SYNC, CMD_MENU_LINK, CMD_MIDI_THRU};

template <std::size_t N>
bool Among(const uint32_t (&ids)[N], uint32_t id) {
  return std::find(std::begin(ids), std::end(ids), id) != std::end(ids);
}

// The toolbar: 0 stands for a separator.
constexpr uint32_t ToolbarEntries[] = {0, CMD_NEW_SONG, CMD_OPEN_SONG, CMD_SAVE_SONG, 0, CMD_CUT, CMD_COPY, CMD_PASTE};

// The toolbar's images, from the resources: a page, a folder, a diskette,
// scissors, two pages, a clipboard.
QIcon ToolImage(uint32_t id) {
  static const std::map<uint32_t, const char*> images = {
      {CMD_NEW_SONG, "new"}, {CMD_OPEN_SONG, "open"}, {CMD_SAVE_SONG, "save"},
      {CMD_CUT, "cut"},      {CMD_COPY, "copy"},      {CMD_PASTE, "paste"},
  };
  const auto found = images.find(id);
  if (found == images.end()) return QIcon();
  return QIcon(QStringLiteral(":/icons/%1.png").arg(QLatin1String(found->second)));
}

struct ViewPlace {
  uint32_t id;
  const char* title;
  const SharedWord<uint32_t>* open;
};

const ViewPlace ViewPlaces[] = {
    {CMD_VIEW_TRACKS, "Tracks", &TracksOpen},
    {CMD_VIEW_EVENTS, "Events List", &EventsOpen},
    {CMD_VIEW_CONTROLLERS, "Controlers", &ControllersOpen},
    {CMD_VIEW_LYRICS, "Lyrics", &LyricsOpen},
    {CMD_VIEW_CONTROL_PANEL, "Control Panel", &ControlPanelOpen},
    {CMD_VIEW_DISTRIBUTIONS, "Distributions", &DistributionsOpen},
    {CMD_VIEW_FUNCTIONS, "Functions", &FunctionsOpen},
    {CMD_VIEW_BOARDS, "Boards", &BoardsOpen},
    {CMD_VIEW_BANKS, "Banks", &BanksOpen},
};

}  // namespace

std::optional<bool> CommandAllowed(uint32_t id) {
  const bool idle = Playing != 1 && Recording != 1;
  const bool tracksSelected = SelectedTrackCount != 0;
  if (id == CMD_PASTE) return idle && PasteAvailable();
  if (Among(EditCommands, id)) return idle && tracksSelected;
  if (Among(IdleCommands, id)) return idle;
  return std::nullopt;
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
  statusBar()->setSizeGripEnabled(true);
  status_ = new QLabel(statusBar());
  status_->setObjectName(QStringLiteral("status line"));
  statusBar()->addWidget(status_, 1);
  qApp->installEventFilter(new TextFieldsKeepShortcutKeys(this));
  // What runs, the position, the lit transport faces and the title's marker
  // follow the transport words, which the clock's threads change.
  auto* statusTimer = new QTimer(this);
  connect(statusTimer, &QTimer::timeout, this, [this] { refreshStatus(); });
  statusTimer->start(100);
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
      } else if (entry.id == 3) {
        recentMenu_ = top->addMenu(QString::fromUtf8(entry.label));
        recentMenu_->setObjectName(QStringLiteral("recent"));
        connect(recentMenu_, &QMenu::aboutToShow, this, [this] { fillRecentMenu(); });
      } else {
        QAction* action = current->addAction(QString::fromUtf8(entry.label));
        action->setObjectName(QString::number(entry.id));
        action->setCheckable(Among(CheckedCommands, entry.id));
        action->setShortcut(CommandShortcut(entry.id));
        // A held transport key presses its button once, not on every repeat.
        if (entry.id >= CMD_KEY_PLAY_STOP && entry.id <= CMD_KEY_GENERATE) action->setAutoRepeat(false);
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
  for (const uint32_t id : EditCommands) actions_[id]->setEnabled(false);
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
    tool->setEnabled(id == CMD_NEW_SONG || id == CMD_OPEN_SONG || id == CMD_SAVE_SONG);
    connect(tool, &QAction::triggered, this, [this, id] { command(id); });
    tools_[id] = tool;
  }
}

QAction* MainFrame::menuAction(uint32_t id) const { return FindById(actions_, id); }

QAction* MainFrame::toolAction(uint32_t id) const { return FindById(tools_, id); }

// SetFrameTitle: "Velmora - [SongTitle]", with the file's name for a path.
// The song that has changed since it was saved gets Qt's modified marker.
void MainFrame::showSongTitle(const std::string& songTitle) {
  const QString title = QString::fromStdString(songTitle);
  const QFileInfo file(title);
  songName_ = file.isFile() ? file.fileName() : title;
  // A file joins Open recent once the song is it: loaded or saved, so clean. An
  // Open cancelled at the question about changes still names the file in the title.
  if (file.isFile() && SongDirty == 0) AddRecentFile(file.absoluteFilePath());
  showModified(SongDirty != 0);
}

void MainFrame::showModified(bool modified) {
  // The marker's place holder is in the title only while it shows, so an unchanged song's title stays plain.
  setWindowTitle(QStringLiteral("Velmora - [%1]%2").arg(songName_, modified ? QStringLiteral("[*]") : QString()));
  setWindowModified(modified);
}

void MainFrame::refreshStatus() {
  if (isWindowModified() != (SongDirty != 0)) showModified(SongDirty != 0);
  status_->setText(QString::fromStdString(StatusLine()));
  if (controlBar_ == nullptr) return;
  const std::pair<uint32_t, bool> lit[] = {{CMD_PLAY, Playing == 1},
                                           {CMD_RECORD, Recording == 1},
                                           {CMD_GENERATE, Generating == 1},
                                           {CMD_MIDI_SYNC, WaitingForMidiClock()}};
  for (const auto& [id, on] : lit) {
    if (Button* button = controlBar_->button(id)) button->setLit(on);
  }
}

void MainFrame::fillRecentMenu() {
  recentMenu_->clear();
  const QStringList files = RecentFiles();
  for (int n = 0; n < files.size(); ++n) {
    QAction* action = recentMenu_->addAction(QStringLiteral("&%1 %2").arg(n + 1).arg(QFileInfo(files[n]).fileName()));
    action->setObjectName(QString::number(CMD_FIRST_RECENT_FILE + static_cast<uint32_t>(n)));
    action->setToolTip(files[n]);
    action->setEnabled(Playing != 1 && Recording != 1);
    connect(action, &QAction::triggered, this, [file = files[n]] { OpenGivenFile(file); });
  }
  if (files.isEmpty()) recentMenu_->addAction(QStringLiteral("(none)"))->setEnabled(false);
}

// The transport's keys press the Control Bar's buttons, as a click does.
void MainFrame::pressTransport(uint32_t id) {
  if (controlBar_ == nullptr) return;
  if (Button* button = controlBar_->button(id)) button->click();
}

void MainFrame::checkMenuItem(uint32_t id, bool checked) {
  if (QAction* action = menuAction(id)) action->setChecked(checked);
}

void MainFrame::setCommandEnabled(uint32_t id, bool enabled, bool alsoToolbar) {
  if (QAction* action = menuAction(id)) action->setEnabled(enabled);
  if (!alsoToolbar) return;
  if (QAction* tool = toolAction(id)) tool->setEnabled(enabled);
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
    switch (id) {
      case CMD_VIEW_CONTROL_PANEL:
        openMdiChild(new shell::ControlPanelWindow, 0, 0, clientRect_.width(), clientRect_.height());
        return;
      case CMD_VIEW_DISTRIBUTIONS: openMdiChild(new shell::DistributionsWindow, 0, 0, clientRect_.width(), 278); return;
      case CMD_VIEW_FUNCTIONS: openMdiChild(new shell::FunctionsWindow, 0, 0, clientRect_.width(), 235); return;
      case CMD_VIEW_BOARDS: openMdiChild(new shell::BoardsWindow, 0, 0, clientRect_.width(), 278); return;
      case CMD_VIEW_BANKS: openMdiChild(new shell::BanksWindow, 0, 0, 510, 195); return;
      case CMD_VIEW_TRACKS: openMdiChild(new shell::TracksWindow, 0, 0, clientRect_.width(), 156); return;
      case CMD_VIEW_CONTROLLERS: openMdiChild(new shell::ControllersWindow, 0, 0, clientRect_.width(), 278); return;
      case CMD_VIEW_LYRICS: openMdiChild(new shell::LyricsWindow, 0, 0, clientRect_.width(), 156); return;
      case CMD_VIEW_EVENTS:
        openMdiChild(new shell::EventsWindow, 0, 156, clientRect_.width(), clientRect_.height() - 156);
        return;
      default: return;
    }
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
    action->setObjectName(QString::number(CMD_FIRST_CHILD_WINDOW + n++));
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
  if (const std::optional<bool> allowed = CommandAllowed(id); allowed && !*allowed) return;
  switch (id) {
    case CMD_NEW_SONG: NewSong(); return;
    case CMD_OPEN_SONG: OpenSongDialog(); return;
    case CMD_SAVE_SONG: SaveSong(); return;
    case CMD_SAVE_SONG_AS: SaveSongAs(); return;
    case CMD_OPEN_SETUP: ReadParameterFile(ControlBarWindow); return;
    case CMD_SAVE_SETUP_AS: WriteParameterFile(ControlBarWindow); return;
    case CMD_EXIT: close(); return;
    case CMD_KEY_PLAY_STOP: pressTransport(Playing == 1 || Recording == 1 ? CMD_STOP : CMD_PLAY); return;
    case CMD_KEY_RECORD: pressTransport(CMD_RECORD); return;
    case CMD_KEY_GENERATE: pressTransport(CMD_GENERATE); return;
    case CMD_QUANTIZE_RECORD_SETTINGS: MakeFieldDialog(this, DLG_QUANTIZE_RECORD)->exec(); return;
    case CMD_SELECT_FROM: MakeFieldDialog(this, DLG_FROM)->exec(); return;
    case CMD_SELECT_TO: MakeFieldDialog(this, DLG_TO)->exec(); return;
    case CMD_SELECT_FROM_NOW: SelectFromNow(); return;
    case CMD_SELECT_TO_NOW: SelectToNow(); return;
    case CMD_SELECT_FROM_HOME: SelectFromHome(); return;
    case CMD_SELECT_TO_END: SelectToEnd(); return;
    case CMD_GO_TO_TIME: MakeFieldDialog(this, DLG_GO_TO)->exec(); return;
    case CMD_GO_TO_BEGINNING: GoToBeginning(); return;
    case CMD_GO_TO_SONG_END: GoToSongEnd(); return;
    case CMD_MENU_LINK:
      platform::send(ControlBarWindow, WM_COMMAND, CMD_LINK, 0);
      platform::post(ControlBarControl(CMD_LINK), BUTTON_SET_STATE, Linked == 1 ? 1 : 0, 0);
      return;
    case CMD_SEED: MakeFieldDialog(this, DLG_SEED)->exec(); return;
    case CMD_TRACK_DELETE:
      DeleteTrack(RecordTrack);
      SongDirty = 1;
      return;
    case CMD_TRACK_PROPERTIES: OpenTrackDialog(this); return;
    case CMD_COPY: shell::CopyCommand(this); return;
    case CMD_CUT: shell::CutCommand(this); return;
    case CMD_PASTE: shell::PasteCommand(this); return;
    case CMD_QUANTIZE: shell::TransformCommand(this, DLG_QUANTIZE); return;
    case CMD_LENGTH: shell::TransformCommand(this, DLG_LENGTH); return;
    case CMD_SLIDE: shell::TransformCommand(this, DLG_SLIDE); return;
    case CMD_TRANSPOSE: shell::TransformCommand(this, DLG_TRANSPOSE); return;
    case CMD_VELOCITY: shell::TransformCommand(this, DLG_VELOCITY); return;
    case CMD_TRACK_SELECT: SelectCurrentTrack(); return;
    case CMD_TEMPO: MakeFieldDialog(this, DLG_TEMPO)->exec(); return;
    case CMD_METER: {
      MeterDialog dialog(this);
      if (dialog.exec() == QDialog::Accepted) ApplyMeter();
      return;
    }
    case CMD_METRONOME_SETTINGS: {
      MetronomeDialog dialog(this);
      if (dialog.exec() == QDialog::Accepted) ApplyMetronome();
      return;
    }
    case CMD_RESOLUTION: {
      const uint32_t old = SongResolution;
      if (MakeFieldDialog(this, DLG_RESOLUTION)->exec() == QDialog::Accepted) RescaleSongTimes(old, SongResolution);
      return;
    }
    case CMD_MIDI_DEVICES: {
      DevicesDialog dialog(this);
      dialog.exec();
      return;
    }
    case CMD_MENU_INTERNAL_CLOCK:
    case CMD_MENU_MIDI_SYNC:
    case CMD_MIDI_THRU: platform::send(ControlBarWindow, WM_COMMAND, id, 0); return;
    case CMD_INPUT_FILTERS: FilterDialog(this, DLG_INPUT_FILTERS).exec(); return;
    case CMD_OUTPUT_FILTERS: FilterDialog(this, DLG_OUTPUT_FILTERS).exec(); return;
    case CMD_CASCADE: client_->cascadeSubWindows(); return;
    case CMD_TILE: client_->tileSubWindows(); return;
    case CMD_ARRANGE_ICONS: arrangeIcons(); return;
    case CMD_CLOSE_ALL: closeAllMdiChildren(); return;
    case CMD_HELP_CONTENTS: OpenManual(QString()); return;
    case CMD_HELP_USING: OpenManual(QString::fromLatin1(ManualUsingHelp)); return;
    case CMD_ABOUT: {
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
