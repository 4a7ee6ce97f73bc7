#include "shell/about_dialog.h"

#include <QApplication>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "live/product_info.h"
#include "platform/command_ids.h"
#include "shell/dialog_support.h"

namespace shell {

// Placeholders: the product has no web site or mail address of its own yet.
const char* const AboutWebPage = "https://velmora.invalid/";
const char* const AboutMailAddress = "dev@velmora.invalid";

namespace {

// A read-only field on the button face, in the window text colour.
QLineEdit* ReadOnlyField(QWidget* parent, int id, Qt::Alignment alignment) {
  auto* field = new QLineEdit(parent);
  field->setObjectName(QString::number(id));
  field->setReadOnly(true);
  field->setFrame(false);
  field->setAlignment(alignment);
  field->setFocusPolicy(Qt::ClickFocus);
  QPalette colours = field->palette();
  colours.setColor(QPalette::Base, colours.color(QPalette::Button));
  colours.setColor(QPalette::Text, colours.color(QPalette::WindowText));
  field->setPalette(colours);
  return field;
}

QPushButton* IdButton(QWidget* parent, int id, const QString& text) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(QString::number(id));
  button->setAutoDefault(false);
  return button;
}

// Wide enough for its whole text, with the margins a line edit keeps.
void FitText(QLineEdit* field) {
  const int text = field->fontMetrics().horizontalAdvance(field->text());
  field->setMinimumWidth(std::max(field->minimumSizeHint().width(), text + 12));
}

}  // namespace

QPixmap AboutIcon(int side) {
  const QIcon own = QApplication::windowIcon();
  if (!own.isNull()) return own.pixmap(side, side);

  QPixmap picture(side, side);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const double u = side / 16.0;
  const QRectF tile(u / 2, u / 2, side - u, side - u);
  painter.setPen(QPen(QColor(0, 80, 80), u / 2));
  painter.setBrush(QColor(0, 128, 128));
  painter.drawRoundedRect(tile, 3 * u, 3 * u);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::white);
  const QPointF c = tile.center();
  const double d = 4.2 * u;
  for (const QPointF& pip : {c, c + QPointF(-d, -d), c + QPointF(d, -d), c + QPointF(-d, d), c + QPointF(d, d)})
    painter.drawEllipse(pip, 1.6 * u, 1.6 * u);
  return picture;
}

AboutDialog::AboutDialog(QWidget* parent, UrlOpener open) : QDialog(parent), open_(std::move(open)) {
  setObjectName(QString::number(DLG_ABOUT));
  setWindowTitle(QStringLiteral("About..."));
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);

  auto* icon = new QLabel(this);
  icon->setObjectName(QString::number(ID_ABOUT_ICON));
  icon->setPixmap(AboutIcon(48));
  icon->setAlignment(Qt::AlignLeft | Qt::AlignTop);

  QLineEdit* product = ReadOnlyField(this, ID_ABOUT_PRODUCT, Qt::AlignCenter);
  QFont bold = product->font();
  bold.setBold(true);
  product->setFont(bold);
  QLineEdit* copyright = ReadOnlyField(this, ID_ABOUT_COPYRIGHT, Qt::AlignCenter);
  QLineEdit* special = ReadOnlyField(this, ID_ABOUT_SPECIAL, Qt::AlignRight | Qt::AlignVCenter);

  auto* contact = new QLabel(QStringLiteral("New releases Web and contact points:"), this);
  auto* mail = new QLabel(QString::fromLatin1(AboutMailAddress), this);
  mail->setObjectName(QStringLiteral("mailAddress"));
  auto* web = new QLabel(QString::fromLatin1(AboutWebPage), this);
  web->setObjectName(QStringLiteral("webAddress"));
  for (QLabel* line : {mail, web}) {
    line->setIndent(16);
    line->setTextInteractionFlags(Qt::TextSelectableByMouse);
  }

  QPushButton* ok = IdButton(this, 1, QStringLiteral("OK"));
  ok->setDefault(true);
  QPushButton* http = IdButton(this, ID_ABOUT_HTTP, QStringLiteral("http"));
  QPushButton* mailTo = IdButton(this, ID_ABOUT_MAIL_TO, QStringLiteral("mail to"));
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  // A link that fails to open is ignored; the box stays open either way.
  connect(http, &QPushButton::clicked, this, [this] {
    if (open_) open_(QUrl(QString::fromLatin1(AboutWebPage)));
  });
  connect(mailTo, &QPushButton::clicked, this, [this] {
    if (open_) open_(QUrl(QStringLiteral("mailto:") + QString::fromLatin1(AboutMailAddress)));
  });

  auto* rule = new QFrame(this);
  rule->setFrameShape(QFrame::HLine);
  rule->setFrameShadow(QFrame::Sunken);

  auto* names = new QVBoxLayout;
  names->setSpacing(2);
  names->addWidget(product);
  names->addWidget(copyright);

  auto* head = new QHBoxLayout;
  head->setSpacing(12);
  head->addWidget(icon, 0, Qt::AlignTop);
  head->addLayout(names, 1);
  // As wide as the icon, so that the two fields stand in the dialog's middle.
  head->addSpacing(icon->sizeHint().width());

  auto* links = new QGridLayout;
  links->setHorizontalSpacing(16);
  links->setVerticalSpacing(6);
  links->addWidget(contact, 0, 0, 1, 2);
  links->addWidget(mail, 1, 0);
  links->addWidget(mailTo, 1, 1);
  links->addWidget(web, 2, 0);
  links->addWidget(http, 2, 1);
  links->setColumnStretch(0, 1);

  auto* foot = new QHBoxLayout;
  foot->addWidget(special, 1);
  foot->addWidget(ok);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 16, 16, 12);
  layout->setSpacing(10);
  layout->addLayout(head);
  layout->addWidget(rule);
  layout->addLayout(links);
  layout->addSpacing(6);
  layout->addLayout(foot);

  fill();
  for (QLineEdit* each : {product, copyright, special}) FitText(each);
  setFixedSize(sizeHint());
}

QLineEdit* AboutDialog::field(int id) const { return findChild<QLineEdit*>(QString::number(id)); }

void AboutDialog::fill() {
  const QString name = QString::fromStdString(ProductName());
  const QString version = QString::fromStdString(ProductVersion());
  const QString copyright = QString::fromStdString(LegalCopyright());
  const QString special = QString::fromStdString(SpecialBuild());
  // Name, the field's own (empty) text and version, each joined by one blank.
  if (!name.isEmpty() && !version.isEmpty()) {
    QLineEdit* product = field(ID_ABOUT_PRODUCT);
    product->setText(QStringLiteral("%1 %2 %3").arg(name, product->text(), version));
  }
  if (!copyright.isEmpty()) field(ID_ABOUT_COPYRIGHT)->setText(copyright);
  if (!special.isEmpty()) field(ID_ABOUT_SPECIAL)->setText(special);
}

void AboutDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  CenterOnDesktop(this);
}

}  // namespace shell
