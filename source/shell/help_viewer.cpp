#include "shell/help_viewer.h"

#include <QFileInfo>
#include <QPointer>
#include <QToolButton>
#include <QVBoxLayout>

#include "shell/help.h"

namespace shell {

namespace {

QPointer<HelpViewer> viewer;

}  // namespace

HelpViewer::HelpViewer(QWidget* parent) : QWidget(parent, Qt::Window) {
  setObjectName(QStringLiteral("help viewer"));
  setWindowTitle(QStringLiteral("Velmora Help"));
  setAttribute(Qt::WA_DeleteOnClose);
  setAttribute(Qt::WA_QuitOnClose, false);  // an open help window does not keep Velmora running
  auto* layout = new QVBoxLayout(this);
  auto* tools = new QHBoxLayout;
  browser_ = new QTextBrowser(this);
  browser_->setOpenExternalLinks(true);
  const auto addButton = [&](const QString& name, const QString& text) {
    auto* button = new QToolButton(this);
    button->setObjectName(name);
    button->setText(text);
    tools->addWidget(button);
    return button;
  };
  QToolButton* back = addButton(QStringLiteral("back"), QStringLiteral("< Back"));
  QToolButton* forward = addButton(QStringLiteral("forward"), QStringLiteral("Forward >"));
  QToolButton* contents = addButton(QStringLiteral("contents"), QStringLiteral("Contents"));
  tools->addStretch(1);
  QToolButton* browser = addButton(QStringLiteral("browser"), QStringLiteral("Open in web browser"));
  back->setEnabled(false);
  forward->setEnabled(false);
  connect(back, &QToolButton::clicked, browser_, &QTextBrowser::backward);
  connect(forward, &QToolButton::clicked, browser_, &QTextBrowser::forward);
  connect(browser_, &QTextBrowser::backwardAvailable, back, &QToolButton::setEnabled);
  connect(browser_, &QTextBrowser::forwardAvailable, forward, &QToolButton::setEnabled);
  connect(contents, &QToolButton::clicked, this, [this] { browser_->setSource(contents_); });
  connect(browser, &QToolButton::clicked, this, [this] { OpenUrlOnDesktop(browser_->source()); });
  layout->addLayout(tools);
  layout->addWidget(browser_, 1);
  resize(760, 640);
}

void HelpViewer::showPage(const QUrl& url) {
  contents_ = url.adjusted(QUrl::RemoveFragment);
  contents_.setFragment(QStringLiteral("contents"));
  browser_->setSource(url);
  if (url.hasFragment()) browser_->scrollToAnchor(url.fragment());
}

QToolButton* HelpViewer::button(const QString& name) const { return findChild<QToolButton*>(name); }

bool ShowInHelpViewer(const QUrl& url) {
  if (!QFileInfo(url.toLocalFile()).isReadable()) return false;
  if (viewer == nullptr) viewer = new HelpViewer;
  viewer->showPage(url);
  viewer->show();
  viewer->raise();
  viewer->activateWindow();
  return true;
}

HelpViewer* TheHelpViewer() { return viewer; }

}  // namespace shell
