#pragma once
// The built-in help viewer: the manual shown in a window of Velmora's own, so
// that help works on a machine without a web browser. Back, Forward and
// Contents move in it; "Open in web browser" hands the page to the desktop.
#include <QTextBrowser>
#include <QUrl>
#include <QWidget>

class QToolButton;

namespace shell {

class HelpViewer final : public QWidget {
 public:
  explicit HelpViewer(QWidget* parent = nullptr);
  // Shows the page, scrolled to the URL's anchor when it has one.
  void showPage(const QUrl& url);
  QTextBrowser* browser() const { return browser_; }
  QToolButton* button(const QString& name) const;

 private:
  QTextBrowser* browser_;
  QUrl contents_;
};

// Shows the page in the one help viewer, made on first use and raised after;
// true when the page could be read.
bool ShowInHelpViewer(const QUrl& url);
// The viewer, once made; null before.
HelpViewer* TheHelpViewer();

}  // namespace shell
