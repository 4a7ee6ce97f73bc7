#include "shell/generator/banks_window.h"

#include <QAction>
#include <QFontDatabase>
#include <QLineEdit>
#include <QPalette>
#include <tuple>

#include "platform/command_ids.h"
#include "shell/controls.h"
#include "shell/dialogs.h"

namespace shell {

BanksWindow::BanksWindow(QWidget* parent) : QWidget(parent), list_(new QListWidget(this)) {
  setObjectName(QStringLiteral("BanksWin"));
  setWindowTitle(QStringLiteral("Banks"));
  setMinimumSize(sizeHint());
  BanksOpen = 1;
  ::BanksWindow = this;

  list_->setObjectName(QString::number(ID_BANK_LIST));
  list_->setGeometry(6, 6, 400, 159);
  list_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  list_->setFrameShadow(QFrame::Sunken);
  list_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  QPalette colours = list_->palette();
  colours.setColor(QPalette::Base, Qt::white);
  colours.setColor(QPalette::Text, Qt::black);
  list_->setPalette(colours);
  connect(list_, &QListWidget::currentRowChanged, this, [this](int row) {
    if (row >= 0) banks_.selected = static_cast<std::size_t>(row);
  });
  // The Bank Name command has no control of its own: the list's context menu
  // and a double click on a line reach it.
  auto* name = new QAction(QStringLiteral("&Name..."), list_);
  connect(name, &QAction::triggered, this, [this] { command(ID_BANK_NAME); });
  list_->addAction(name);
  list_->setContextMenuPolicy(Qt::ActionsContextMenu);
  connect(list_, &QListWidget::itemDoubleClicked, this, [this] { command(ID_BANK_NAME); });

  for (const auto& [id, caption, y] :
       {std::tuple{ID_BANK_RECEIVE, "Receive", 6}, std::tuple{ID_BANK_SEND, "Send", 32},
        std::tuple{ID_BANK_SAVE, "Save bank", 58}, std::tuple{ID_BANK_LOAD, "Load bank", 84},
        std::tuple{ID_BANK_DELETE, "Delete", 110}}) {
    auto* button = new QPushButton(QString::fromLatin1(caption), this);
    button->setObjectName(QString::number(id));
    button->setGeometry(412, y, 82, 24);
    button->setFocusPolicy(Qt::TabFocus);
    connect(button, &QPushButton::clicked, this, [this, id = id] { command(id); });
    buttons_[id] = button;
  }
  // Activating the window gives the keyboard focus to the list.
  setFocusProxy(list_);
  refresh();
  list_->setCurrentRow(0);
}

BanksWindow::~BanksWindow() {
  BanksOpen = 0;
  if (::BanksWindow == this) ::BanksWindow = nullptr;
  if (platform::MessageLoop* loop = platform::messageLoop()) loop->forget(this);
}

QPushButton* BanksWindow::button(uint32_t id) const { return FindById(buttons_, id); }

intptr_t BanksWindow::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) {
  if (msg == WM_COMMAND) command(static_cast<uint32_t>(param1 & 0xFFFF));
  return 0;
}

void BanksWindow::refresh() {
  for (std::size_t slot = 0; slot < banks_.lines.size(); ++slot) {
    const QString line = QString::fromStdString(banks_.lines[slot]);
    QListWidgetItem* item = list_->item(static_cast<int>(slot));
    if (item == nullptr) {
      list_->addItem(line);
    } else if (item->text() != line) {
      item->setText(line);
    }
  }
}

void BanksWindow::command(uint32_t id) {
  if (id == ID_BANK_NAME) {
    nameSelected();
    return;
  }
  const AfterBankCommand after = BankCommand(this, banks_, id);
  refresh();
  if (after == AfterBankCommand::Reselect) reselect();
}

void BanksWindow::nameSelected() {
  FieldDialog dialog(this, QStringLiteral("Bank Name"), ID_BANK_NAME_FIELD, QStringLiteral("&Name:"), QString(), {},
                     [this](QLineEdit* field) {
                       NameBank(banks_, field->text().toStdString(), field->isModified());
                       return true;
                     });
  dialog.setObjectName(QStringLiteral("BANKNAME_DLG"));
  dialog.field()->setMaximumWidth(QWIDGETSIZE_MAX);
  dialog.field()->setMinimumWidth(dialog.fontMetrics().horizontalAdvance(QString(24, QLatin1Char('n'))));
  dialog.exec();
  refresh();
  reselect();
}

void BanksWindow::reselect() {
  list_->setCurrentRow(static_cast<int>(banks_.selected));
  list_->setFocus();
}

}  // namespace shell
