#pragma once
// The About box, dialog 22000 of Help > About...: the product's name and
// version, its copyright and special build, and two buttons that open the
// web page and a mail to the makers. Fields and buttons carry their ids as
// object names. UI thread only.
#include <QDialog>
#include <QPixmap>

#include "shell/help.h"

class QLineEdit;

namespace shell {

// Where new releases and the makers are found.
extern const char* const AboutWebPage;
extern const char* const AboutMailAddress;

class AboutDialog : public QDialog {
 public:
  // The opener serves "http" and "mail to"; by default the desktop's.
  explicit AboutDialog(QWidget* parent = nullptr, UrlOpener open = OpenUrlOnDesktop);

  // Field 22001, 22002 or 22003.
  QLineEdit* field(int id) const;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void fill();

  UrlOpener open_;
};

// The picture at the dialog's top left: the application's icon, or a die
// showing five when the application has none.
QPixmap AboutIcon(int side);

}  // namespace shell
