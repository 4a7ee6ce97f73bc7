#include "shell/help.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>

#include "platform/prompts.h"
#include "shell/help_viewer.h"

namespace shell {

namespace {

void Complain(const QString& text) { platform::ShowMessageBox(text.toStdString(), "Velmora", platform::MB_ICONSTOP); }

}  // namespace

bool OpenUrlOnDesktop(const QUrl& url) { return QDesktopServices::openUrl(url); }

QStringList ManualFolders(const QString& programDir) {
  const QDir dir(programDir);
  return {QDir::cleanPath(dir.filePath(QStringLiteral("../share/velmora/help"))),
          QDir::cleanPath(dir.filePath(QStringLiteral("help")))};
}

QStringList ManualFolders() { return ManualFolders(QCoreApplication::applicationDirPath()); }

QUrl ManualUrl(const QString& anchor, const QStringList& folders) {
  for (const QString& folder : folders) {
    const QFileInfo page(QDir(folder).filePath(QLatin1String(ManualFileName)));
    if (!page.isFile()) continue;
    QUrl url = QUrl::fromLocalFile(page.absoluteFilePath());
    if (!anchor.isEmpty()) url.setFragment(anchor);
    return url;
  }
  return {};
}

QUrl ManualUrl(const QString& anchor) { return ManualUrl(anchor, ManualFolders()); }

bool OpenManual(const QString& anchor, const QStringList& folders, const UrlOpener& open) {
  const QUrl url = ManualUrl(anchor, folders);
  if (url.isEmpty()) {
    QString text = QStringLiteral("The help file %1 was not found.\nLooked in:").arg(QLatin1String(ManualFileName));
    for (const QString& folder : folders) text += QStringLiteral("\n") + QDir::toNativeSeparators(folder);
    Complain(text);
    return false;
  }
  if (!open || !open(url)) {
    Complain(QStringLiteral("The help file %1 could not be opened.")
                 .arg(QDir::toNativeSeparators(url.toLocalFile())));
    return false;
  }
  return true;
}

// The built-in viewer always has the page to show, with or without a browser on the machine.
bool OpenManual(const QString& anchor) { return OpenManual(anchor, ManualFolders(), ShowInHelpViewer); }

}  // namespace shell
