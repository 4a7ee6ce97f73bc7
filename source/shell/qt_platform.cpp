#include "shell/qt_platform.h"

#include <QApplication>
#include <QCursor>
#include <QFileDialog>
#include <QMessageBox>
#include <QSettings>
#include <QSocketNotifier>
#include <QStringList>
#include <memory>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace shell {

// ---------------------------------------------------------------------------
// The message loop

const QEvent::Type QtMessageLoop::WakeEvent = static_cast<QEvent::Type>(QEvent::registerEventType());

QtMessageLoop::QtMessageLoop(std::size_t capacity) : QueueLoop(capacity) {
#ifdef Q_OS_UNIX
  int ends[2];
  if (pipe2(ends, O_NONBLOCK | O_CLOEXEC) != 0) return;  // the wake-up falls back to an event
  wakeRead_ = ends[0];
  wakeWrite_ = ends[1];
  auto* notifier = new QSocketNotifier(static_cast<qintptr>(wakeRead_), QSocketNotifier::Read, this);
  QObject::connect(notifier, &QSocketNotifier::activated, this, [this] { woken(); });
#endif
}

QtMessageLoop::~QtMessageLoop() {
#ifdef Q_OS_UNIX
  if (wakeRead_ >= 0) ::close(wakeRead_);
  if (wakeWrite_ >= 0) ::close(wakeWrite_);
#endif
}

void QtMessageLoop::queued() {
  // One wake-up at a time: the loop delivers everything that waits.
  if (wakePending_.exchange(true)) return;
#ifdef Q_OS_UNIX
  if (wakeWrite_ >= 0) {
    const char byte = 1;
    if (::write(wakeWrite_, &byte, 1) == 1) return;
  }
#endif
  QCoreApplication::postEvent(this, new QEvent(WakeEvent));
}

void QtMessageLoop::woken() {
#ifdef Q_OS_UNIX
  char bytes[64];
  while (wakeRead_ >= 0 && ::read(wakeRead_, bytes, sizeof bytes) > 0) {
  }
#endif
  wakePending_ = false;
  deliverQueued();
}

bool QtMessageLoop::event(QEvent* event) {
  if (event->type() != WakeEvent) return QObject::event(event);
  woken();
  return true;
}

std::size_t QtMessageLoop::deliverQueued() {
  // What handlers post meanwhile waits for the next wake-up, so a message
  // that posts itself again cannot hold the UI thread.
  std::size_t waiting = queuedCount();
  std::size_t delivered = 0;
  while (delivered < waiting && deliverOne()) ++delivered;
  if (queuedCount() > 0) queued();
  return delivered;
}

// ---------------------------------------------------------------------------
// The settings store

namespace {

struct KeyPlace {
  QString maker;
  QString product;
  QString group;
};

// "Software\NQuillon\Velmora\0.1.0\Settings" as maker, product and group.
KeyPlace placeOf(const std::string& key) {
  QStringList parts = QString::fromStdString(key).split(u'\\', Qt::SkipEmptyParts);
  if (!parts.isEmpty() && parts.front().compare(u"Software", Qt::CaseInsensitive) == 0) parts.pop_front();
  KeyPlace place;
  if (!parts.isEmpty()) place.maker = parts.takeFirst();
  if (!parts.isEmpty()) place.product = parts.takeFirst();
  place.group = parts.join(u'/');
  return place;
}

std::unique_ptr<QSettings> openKey(platform::SettingsLevel level, const std::string& key) {
  const KeyPlace place = placeOf(key);
  const auto scope = level == platform::SettingsLevel::User ? QSettings::UserScope : QSettings::SystemScope;
  auto settings = std::make_unique<QSettings>(QSettings::NativeFormat, scope, place.maker, place.product);
  settings->setFallbacksEnabled(false);  // the two levels are looked up by the caller
  if (!place.group.isEmpty()) settings->beginGroup(place.group);
  return settings;
}

}  // namespace

bool QtSettingsStore::createKey(platform::SettingsLevel level, const std::string& key) {
  return openKey(level, key)->isWritable();
}

bool QtSettingsStore::keyExists(platform::SettingsLevel level, const std::string& key) const {
  const auto settings = openKey(level, key);
  return !settings->childKeys().isEmpty() || !settings->childGroups().isEmpty();
}

// Numbers are kept readable: a 4-byte value as its decimal number, a 1-byte
// value the same with a mark under "One Byte", so that each comes back with
// its size. A text that reads as a number is marked under "Text". Other
// binary values, and the byte strings of earlier versions, stay byte strings;
// those are still read, and are written back as numbers at the next save.
namespace {

const QString OneByteGroup = QStringLiteral("One Byte/");
const QString TextGroup = QStringLiteral("Text/");

std::optional<uint32_t> decimal(const QString& text) {
  if (text.isEmpty() || text.size() > 10) return std::nullopt;
  for (const QChar c : text) {
    if (c < u'0' || c > u'9') return std::nullopt;
  }
  const qulonglong value = text.toULongLong();
  if (value > 0xFFFFFFFFull) return std::nullopt;
  return static_cast<uint32_t>(value);
}

}  // namespace

std::optional<platform::SettingsValue> QtSettingsStore::query(platform::SettingsLevel level, const std::string& key,
                                                              const std::string& name) const {
  const auto settings = openKey(level, key);
  const QString valueName = QString::fromStdString(name);
  const QVariant value = settings->value(valueName);
  if (!value.isValid()) return std::nullopt;
  if (value.typeId() == QMetaType::QByteArray) {
    const QByteArray bytes = value.toByteArray();
    return platform::SettingsValue::binary(
        std::span(reinterpret_cast<const uint8_t*>(bytes.constData()), static_cast<std::size_t>(bytes.size())));
  }
  const QString text = value.toString();
  const std::optional<uint32_t> number = decimal(text);
  if (number && !settings->contains(TextGroup + valueName)) {
    if (!settings->contains(OneByteGroup + valueName)) return platform::SettingsValue::word(*number);
    if (*number <= 0xFF) return platform::SettingsValue::byte(static_cast<uint8_t>(*number));
  }
  return platform::SettingsValue::text(text.toStdString());
}

bool QtSettingsStore::set(platform::SettingsLevel level, const std::string& key, const std::string& name,
                          const platform::SettingsValue& value) {
  const auto settings = openKey(level, key);
  if (!settings->isWritable()) return false;
  const QString valueName = QString::fromStdString(name);
  settings->remove(OneByteGroup + valueName);
  settings->remove(TextGroup + valueName);
  const bool binary = value.type == platform::SettingsType::Binary;
  if (binary && (value.data.size() == 4 || value.data.size() == 1)) {
    settings->setValue(valueName, value.asNumber());
    if (value.data.size() == 1) settings->setValue(OneByteGroup + valueName, true);
  } else if (binary) {
    settings->setValue(valueName, QByteArray(reinterpret_cast<const char*>(value.data.data()),
                                             static_cast<qsizetype>(value.data.size())));
  } else {
    const QString text = QString::fromStdString(value.asText());
    settings->setValue(valueName, text);
    if (decimal(text)) settings->setValue(TextGroup + valueName, true);
  }
  settings->sync();
  return settings->status() == QSettings::NoError;
}

// ---------------------------------------------------------------------------
// The prompts

namespace {

QMessageBox::Icon iconOf(uint32_t style) {
  switch (style & 0xF0) {
    case platform::MB_ICONSTOP: return QMessageBox::Critical;
    case platform::MB_ICONQUESTION: return QMessageBox::Question;
    case platform::MB_ICONEXCLAMATION: return QMessageBox::Warning;
    case platform::MB_ICONINFORMATION: return QMessageBox::Information;
    default: return QMessageBox::NoIcon;
  }
}

QMessageBox::StandardButtons buttonsOf(uint32_t style) {
  switch (style & 0x0F) {
    case 1: return QMessageBox::Ok | QMessageBox::Cancel;
    case platform::MB_YESNOCANCEL: return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case platform::MB_YESNO: return QMessageBox::Yes | QMessageBox::No;
    default: return QMessageBox::Ok;
  }
}

int answerOf(int button) {
  switch (button) {
    case QMessageBox::Yes: return platform::IDYES;
    case QMessageBox::No: return platform::IDNO;
    case QMessageBox::Cancel: return platform::IDCANCEL;
    default: return platform::IDOK;
  }
}

std::optional<std::string> chooseFile(const platform::FileDialog& dialog, bool save) {
  QFileDialog chooser(QApplication::activeWindow(), QString::fromStdString(dialog.title),
                      QString::fromStdString(dialog.initialDirectory), FileDialogFilter(dialog));
  chooser.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  // Saving may always name a new file; the must-exist flag then bears on its folder only.
  chooser.setFileMode(save || !dialog.mustExist ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  chooser.setDefaultSuffix(FileDialogDefaultSuffix(dialog));
  if (!dialog.askToOverwrite) chooser.setOption(QFileDialog::DontConfirmOverwrite);
  if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty()) return std::nullopt;
  return chooser.selectedFiles().front().toStdString();
}

}  // namespace

QString FileDialogFilter(const platform::FileDialog& dialog) {
  QStringList filters;
  for (const platform::FileFilter& filter : dialog.filters) {
    // The label names its patterns itself ("Velmora Files(*.vlm)"); Qt wants them once, after a blank.
    QString label = QString::fromStdString(filter.label);
    if (const auto open = label.lastIndexOf(u'('); open > 0 && label.endsWith(u')')) label = label.left(open).trimmed();
    QString pattern = QString::fromStdString(filter.pattern);
    pattern.replace(u';', u' ');
    if (pattern == QStringLiteral("*.*")) pattern = QStringLiteral("*");  // every file, with a dot or not
    filters << QStringLiteral("%1 (%2)").arg(label, pattern);
  }
  return filters.join(QStringLiteral(";;"));
}

QString FileDialogDefaultSuffix(const platform::FileDialog& dialog) {
  if (dialog.defaultExtension.empty()) return {};
  const auto real = [](const QString& extension) {
    return !extension.isEmpty() && !extension.contains(u'*') && !extension.contains(u'?');
  };
  QString extension = QString::fromStdString(dialog.defaultExtension);
  if (extension.startsWith(u'.')) extension.remove(0, 1);
  if (real(extension)) return extension;
  // A wildcard ("*") asks for the extension of the filter, which is the first one.
  if (dialog.filters.empty()) return {};
  const QString pattern = QString::fromStdString(dialog.filters.front().pattern).section(u';', 0, 0).trimmed();
  if (!pattern.startsWith(QStringLiteral("*."))) return {};
  extension = pattern.mid(2);
  return real(extension) ? extension : QString();
}

int QtPrompts::messageBox(const std::string& text, const std::string& title, uint32_t style) {
  QMessageBox box(iconOf(style), QString::fromStdString(title), QString::fromStdString(text), buttonsOf(style),
                  QApplication::activeWindow());
  return answerOf(box.exec());
}

std::optional<std::string> QtPrompts::openFileName(const platform::FileDialog& dialog) {
  return chooseFile(dialog, false);
}

std::optional<std::string> QtPrompts::saveFileName(const platform::FileDialog& dialog) {
  return chooseFile(dialog, true);
}

void QtPrompts::beginWaitCursor() { QApplication::setOverrideCursor(QCursor(Qt::WaitCursor)); }

void QtPrompts::endWaitCursor() { QApplication::restoreOverrideCursor(); }

}  // namespace shell
