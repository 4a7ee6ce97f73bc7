#pragma once
// The frame: the one top-level window, with the menu bar, the toolbar, the
// Control Bar, the status line and the client area of the views. It
// turns menu commands into calls to their owners, grays commands while the
// transport plays or records, opens and finds the views, and runs the exit.
#include <QMainWindow>
#include <QMdiArea>
#include <QRect>
#include <map>
#include <optional>

#include "platform/view_registry.h"

class QAction;
class QLabel;
class QMdiSubWindow;
class QToolBar;

namespace shell {

class ControlBarWidget;

// Whether the transport's state allows a command now, for the commands that
// the gray rules govern; nothing for the others, which are never grayed.
std::optional<bool> CommandAllowed(uint32_t id);
// The hint of a command, as its tool tip shows it; empty when it has none.
QString CommandHint(uint32_t id);

class MainFrame final : public QMainWindow, public platform::FrameView {
 public:
  MainFrame();
  ~MainFrame() override;

  // FrameView
  void showSongTitle(const std::string& songTitle) override;
  void updateCommandStates() override;
  void checkMenuItem(uint32_t id, bool checked) override;

  // Runs a menu or toolbar command by its id.
  void command(uint32_t id);
  // Opens a view at the given place, shows it and returns its sub-window.
  QMdiSubWindow* openMdiChild(QWidget* view, int x, int y, int width, int height);
  // Brings the first view with this title to the top, restoring it if minimised.
  void activateMdiChildByTitle(const QString& title);
  void closeAllMdiChildren();
  // Takes the client's size once, after the frame is first shown: every view's size derives from it.
  void takeClientRect();

  QAction* menuAction(uint32_t id) const;
  QAction* toolAction(uint32_t id) const;
  ControlBarWidget* controlBar() const { return controlBar_; }
  QMdiArea* client() const { return client_; }
  QToolBar* toolbar() const { return toolbar_; }
  QRect clientRect() const { return clientRect_; }
  // The status line, the lit transport faces and the title's marker, as the transport and the song stand now.
  void refreshStatus();
  QLabel* statusLine() const { return status_; }
  QMenu* recentMenu() const { return recentMenu_; }

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void createMenus();
  void createToolbar();
  void setCommandEnabled(uint32_t id, bool enabled, bool alsoToolbar);
  void openView(uint32_t id);
  void fillWindowMenu();
  void fillRecentMenu();
  void showModified(bool modified);
  void pressTransport(uint32_t id);
  void arrangeIcons();
  std::map<uint32_t, QAction*> actions_;
  std::map<uint32_t, QAction*> tools_;
  QToolBar* toolbar_ = nullptr;
  ControlBarWidget* controlBar_ = nullptr;
  QMdiArea* client_ = nullptr;
  QMenu* windowMenu_ = nullptr;
  QMenu* recentMenu_ = nullptr;
  QLabel* status_ = nullptr;
  QString songName_;
  QRect clientRect_;
};

}  // namespace shell
