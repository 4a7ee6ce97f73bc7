#include "shell/recent_files.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include "generator/setup_files.h"
#include "live/product_info.h"
#include "midi/transport_words.h"
#include "platform/view_registry.h"
#include "song/song_files.h"
#include "song/song_store.h"

namespace shell {

namespace {

QSettings recentStore() {
  return QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("NQuillon"),
                   QString::fromStdString(ProductName()));
}

const QString RecentKey = QStringLiteral("Recent/Files");

bool IsSetupFile(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return false;
  const QByteArray head = file.read(4);
  return BeginsAsParameterFile(std::span(reinterpret_cast<const uint8_t*>(head.constData()), head.size()));
}

}  // namespace

QStringList RecentFiles() {
  QStringList files;
  for (const QString& path : recentStore().value(RecentKey).toStringList()) {
    if (QFileInfo(path).isFile() && !files.contains(path)) files << path;
  }
  return files.mid(0, RecentFileLimit);
}

void AddRecentFile(const QString& path) {
  QStringList files = recentStore().value(RecentKey).toStringList();
  files.removeAll(path);
  files.prepend(path);
  QSettings store = recentStore();
  store.setValue(RecentKey, files.mid(0, RecentFileLimit));
}

bool OpenGivenFile(const QString& path) {
  const std::string file = QFileInfo(path).absoluteFilePath().toStdString();
  // As Open and Open Velmora, only while the transport stands.
  if (Playing == 1 || Recording == 1) return false;
  if (IsSetupFile(path)) return LoadParameterFile(ControlBarWindow, file) != 0;
  // The question about unsaved work is asked once, here; its answer stands for the load.
  if (SavePrompt() == 0) return false;
  const uint32_t dirty = SongDirty;
  SongDirty = 0;
  if (OpenSongFile(file)) return true;
  SongDirty = dirty;  // the file could not be read: the song is as it was, changes and all
  return false;
}

}  // namespace shell
