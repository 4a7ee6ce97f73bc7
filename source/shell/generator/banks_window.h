#pragma once
// The Banks view: the 256 slots as a list, and Receive, Send, Save bank, Load
// bank and Delete on the selected slot. The list's context menu and a double
// click name the selected line through the Bank Name dialog.
#include <QListWidget>
#include <QPushButton>
#include <map>

#include "generator/banks.h"
#include "platform/message_loop.h"
#include "platform/view_registry.h"

namespace shell {

class BanksWindow final : public QWidget, public platform::MessageTarget, public platform::RefreshableView {
 public:
  explicit BanksWindow(QWidget* parent = nullptr);
  ~BanksWindow() override;

  // WM_COMMAND: the five buttons' ids, and ID_BANK_NAME for the Bank Name dialog.
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  // The lines shown as the window's list holds them.
  void refresh() override;

  QListWidget* list() const { return list_; }
  QPushButton* button(uint32_t id) const;
  const BanksList& banks() const { return banks_; }
  QSize sizeHint() const override { return {500, 171}; }

 private:
  void command(uint32_t id);
  void nameSelected();
  void reselect();
  BanksList banks_;
  QListWidget* list_;
  std::map<uint32_t, QPushButton*> buttons_;
};

}  // namespace shell
