#include "shell/song/lyrics_window.h"

#include <QComboBox>
#include <QFontDialog>
#include <QFontInfo>
#include <QFormLayout>
#include <QIcon>
#include <QPixmap>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "platform/command_ids.h"
#include "shell/dialog_support.h"
#include "song/lyrics_text.h"
#include "song/song_store.h"

namespace shell {

namespace {

// The sixteen colours that a font dialog with effects offers.
struct NamedColour {
  const char* name;
  QRgb rgb;
};
constexpr std::array<NamedColour, 16> Colours = {{{"Black", 0x000000},
                                                  {"Maroon", 0x800000},
                                                  {"Green", 0x008000},
                                                  {"Olive", 0x808000},
                                                  {"Navy", 0x000080},
                                                  {"Purple", 0x800080},
                                                  {"Teal", 0x008080},
                                                  {"Gray", 0x808080},
                                                  {"Silver", 0xC0C0C0},
                                                  {"Red", 0xFF0000},
                                                  {"Lime", 0x00FF00},
                                                  {"Yellow", 0xFFFF00},
                                                  {"Blue", 0x0000FF},
                                                  {"Fuchsia", 0xFF00FF},
                                                  {"Aqua", 0x00FFFF},
                                                  {"White", 0xFFFFFF}}};

}  // namespace

QFont LyricsStartFont() {
  QFont font(QStringLiteral("Times New Roman"));
  font.setStyleHint(QFont::Serif);
  font.setPixelSize(23);  // a character cell 26 pixels high
  font.setWeight(QFont::Normal);
  return font;
}

// ---- the field ----

LyricsField::LyricsField(QWidget* parent) : QPlainTextEdit(parent) {
  setObjectName(QString::number(100));
  setFrameShape(QFrame::StyledPanel);
  setFrameShadow(QFrame::Sunken);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setLineWrapMode(QPlainTextEdit::WidgetWidth);
  // The selection is the sung syllable: it shows in its full colours also
  // while the field lacks the focus, so that a singer can follow it.
  QPalette colours = palette();
  for (QPalette::ColorRole role : {QPalette::Highlight, QPalette::HighlightedText}) {
    colours.setColor(QPalette::Inactive, role, colours.color(QPalette::Active, role));
  }
  setPalette(colours);
}

void LyricsField::setText(const std::string& text) {
  text_ = text;
  setPlainText(QString::fromUtf8(LyricDisplayText(text)));
  QTextCursor start = textCursor();
  start.movePosition(QTextCursor::Start);
  setTextCursor(start);
  ensureCursorVisible();
}

void LyricsField::setHighlight(uint32_t start, uint32_t end) {
  QTextCursor cursor = textCursor();
  const int length = document()->characterCount() - 1;
  if (start == NoSelection) {
    cursor.clearSelection();
  } else {
    const int from = std::min(static_cast<int>(LyricDisplayPosition(text_, start)), length);
    const int to = end == NoSelection ? length : std::min(static_cast<int>(LyricDisplayPosition(text_, end)), length);
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
  }
  setTextCursor(cursor);
  ensureCursorVisible();
}

// ---- the view ----

LyricsWindow::LyricsWindow(QWidget* parent)
    : QWidget(parent), field_(new LyricsField(this)), font_(new QPushButton(QStringLiteral("Font..."), this)) {
  setObjectName(QStringLiteral("LyricsWin"));
  setWindowTitle(QStringLiteral("Lyrics"));
  font_->setObjectName(QString::number(ID_LYRICS_FONT));
  QFont buttonFont = font_->font();
  buttonFont.setPixelSize(11);
  font_->setFont(buttonFont);
  font_->setGeometry(16, 4, 80, 16);
  connect(font_, &QPushButton::clicked, this, [this] { chooseFont(); });
  useFont(LyricsStartFont(), Qt::black);
  LyricsOpen = 1;
  ::LyricsWindow = this;
  ::LyricsEdit = field_;
  refresh();
  setFocusProxy(field_);
}

void LyricsWindow::refresh() { field_->setText(LyricText ? std::string(LyricText.get()) : std::string()); }

LyricsWindow::~LyricsWindow() {
  LyricsOpen = 0;
  ::LyricsEdit = nullptr;
}

QColor LyricsWindow::textColour() const { return field_->palette().color(QPalette::Active, QPalette::Text); }

void LyricsWindow::useFont(const QFont& font, const QColor& colour) {
  field_->setFont(font);
  QPalette colours = field_->palette();
  colours.setColor(QPalette::Base, Qt::white);
  for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    colours.setColor(group, QPalette::Text, colour);
  }
  field_->setPalette(colours);
}

void LyricsWindow::resizeEvent(QResizeEvent*) { field_->setGeometry(10, 27, width() - 20, height() - 37); }

void LyricsWindow::chooseFont() {
  // The dialog starts from the font as the machine renders it: a family that is not installed
  // (Times New Roman, often) would otherwise show as the dialog's first family.
  const QFontInfo shown(field_->font());
  QFont current = field_->font();
  current.setFamily(shown.family());
  current.setStyleName(shown.styleName());
  current.setPointSizeF(shown.pointSizeF());
  LyricsFontDialog dialog(this, current, textColour());
  if (dialog.exec() == QDialog::Accepted) useFont(dialog.selectedFont(), dialog.selectedColour());
}

// ---- the font dialog ----

LyricsFontDialog::LyricsFontDialog(QWidget* parent, const QFont& font, const QColor& colour)
    : QDialog(parent), fonts_(new QFontDialog(this)), colours_(new QComboBox(this)) {
  setWindowTitle(QStringLiteral("Font"));
  // Qt's font dialog chooses no colour: it is shown inside this one, beside a colour list.
  fonts_->setOptions(QFontDialog::NoButtons | QFontDialog::DontUseNativeDialog);
  fonts_->setWindowFlags(Qt::Widget);
  fonts_->setSizeGripEnabled(false);
  fonts_->setCurrentFont(font);
  // Return in its lists and Esc close this dialog, not the font part inside it.
  connect(fonts_, &QDialog::accepted, this, &QDialog::accept);
  connect(fonts_, &QDialog::rejected, this, &QDialog::reject);
  for (const NamedColour& c : Colours) {
    QPixmap swatch(16, 16);
    swatch.fill(QColor::fromRgb(c.rgb));
    colours_->addItem(QIcon(swatch), QString::fromLatin1(c.name), QColor::fromRgb(c.rgb));
  }
  const int current = colours_->findData(colour);
  colours_->setCurrentIndex(current >= 0 ? current : 0);
  auto* colourRow = new QFormLayout;
  colourRow->addRow(QStringLiteral("&Color:"), colours_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(fonts_);
  layout->addLayout(colourRow);
  layout->addWidget(OkCancelButtons(this));
}

QFont LyricsFontDialog::selectedFont() const { return fonts_->currentFont(); }

QColor LyricsFontDialog::selectedColour() const { return colours_->currentData().value<QColor>(); }

}  // namespace shell
