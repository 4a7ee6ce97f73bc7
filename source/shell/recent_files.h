#pragma once
// The files Velmora was given: the last eight songs opened or saved (File >
// Open recent), kept in the settings as readable paths, and a file named on
// the command line or picked from that list, opened by its kind.
#include <QString>
#include <QStringList>

namespace shell {

inline constexpr int RecentFileLimit = 8;

// Newest first; paths that no longer name a file are left out.
QStringList RecentFiles();
// Puts the file first, once, and keeps eight.
void AddRecentFile(const QString& path);

// A set-up file (it begins with "VLhd") is loaded as Open Velmora does, any
// other file as a song, as Open does, with its question about unsaved work
// and its messages. False when the file could not be opened, the user kept
// the song at the question, or the transport runs.
bool OpenGivenFile(const QString& path);

}  // namespace shell
