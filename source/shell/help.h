#pragma once
// The help manual, an HTML page installed with the program with its
// pictures, shown in the built-in viewer (which can hand it to the desktop's
// browser): Help > Contents opens it at the top, Help > Using help at its
// section "using-help". UI thread only.
#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>

namespace shell {

// Opens a link with the desktop's handler; true when it could.
using UrlOpener = std::function<bool(const QUrl&)>;
bool OpenUrlOnDesktop(const QUrl& url);

inline constexpr const char* ManualFileName = "velmora.html";
inline constexpr const char* ManualUsingHelp = "using-help";

// The folders searched for the manual, in order, beside the program in
// programDir: the installed place ../share/velmora/help, then help/ as the
// build tree has it. Without an argument, the running program's folder.
QStringList ManualFolders(const QString& programDir);
QStringList ManualFolders();

// The manual's file URL, with the anchor as its fragment when one is given;
// empty when no folder holds the page.
QUrl ManualUrl(const QString& anchor, const QStringList& folders);
QUrl ManualUrl(const QString& anchor = {});

// Opens the manual at the anchor. When no folder holds the page, or the page
// cannot be opened, a box titled "Velmora" with a stop icon names the file
// and where it was looked for, and the answer is false.
bool OpenManual(const QString& anchor, const QStringList& folders, const UrlOpener& open);
// In the built-in viewer.
bool OpenManual(const QString& anchor);

}  // namespace shell
