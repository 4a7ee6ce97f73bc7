#pragma once
// The Lyrics view: the song's words in a large field, the syllable being sung
// selected as the song plays, and a Font... button that chooses the font and
// its colour. A choice lasts as long as the window: each new one starts from
// Times New Roman in black.
#include <QDialog>
#include <QPlainTextEdit>
#include <QPushButton>
#include <string>

#include "platform/view_registry.h"

class QComboBox;
class QFontDialog;

namespace shell {

// The text field, as the song and the transport drive it.
class LyricsField final : public QPlainTextEdit, public platform::LyricsEditView {
 public:
  explicit LyricsField(QWidget* parent);
  // The song's 8-bit text with line feeds; the caret goes to its start.
  void setText(const std::string& text) override;
  // The highlight by the edit control's rules, its offsets counting a line
  // break as two characters; the selection is scrolled into view.
  void setHighlight(uint32_t start, uint32_t end) override;

 private:
  std::string text_;  // as the song gave it, for the offsets
};

class LyricsWindow final : public QWidget, public platform::RefreshableView {
 public:
  explicit LyricsWindow(QWidget* parent = nullptr);
  ~LyricsWindow() override;
  LyricsField* field() const { return field_; }
  QPushButton* fontButton() const { return font_; }
  QColor textColour() const;
  // The song's words into the field again, from LyricText.
  void refresh() override;
  // The font and colour that the field takes.
  void useFont(const QFont& font, const QColor& colour);

 protected:
  void resizeEvent(QResizeEvent*) override;

 private:
  void chooseFont();
  LyricsField* field_;
  QPushButton* font_;
};

// The font dialog with a colour, as the Lyrics view's Font... button opens it.
class LyricsFontDialog final : public QDialog {
 public:
  LyricsFontDialog(QWidget* parent, const QFont& font, const QColor& colour);
  QFont selectedFont() const;
  QColor selectedColour() const;
  QComboBox* colours() const { return colours_; }
  QFontDialog* fonts() const { return fonts_; }

 private:
  QFontDialog* fonts_;
  QComboBox* colours_;
};

// The font every new Lyrics window starts with.
QFont LyricsStartFont();

}  // namespace shell
