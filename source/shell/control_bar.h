#pragma once
// The Control Bar: the strip above the views that holds the transport. Its
// creation starts the live system (settings, clock, both MIDI devices) and
// its destruction saves the settings and closes them. It takes every private
// notification of the clock and the input.
#include <QLabel>
#include <QWidget>
#include <map>

#include "platform/message_loop.h"
#include "platform/view_registry.h"
#include "shell/controls.h"

namespace shell {

class ControlBarWidget final : public QWidget, public platform::MessageTarget, public platform::ControlBarView {
 public:
  static constexpr int Height = 84;

  explicit ControlBarWidget(QWidget* parent);
  ~ControlBarWidget() override;

  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;

  void setFieldText(uint32_t id, const std::string& text) override;
  void showTempo(double beatsPerMinute) override;
  void showTempoField(double beatsPerMinute) override;
  void enableControl(uint32_t id, bool enabled) override;
  void drawCounter(uint32_t ticks) override;

  // For tests and the frame: a control by its id, or null.
  Button* button(uint32_t id) const;
  QLabel* field(uint32_t id) const;
  UpDown* tempoControl() const { return tempo_; }
  SegmentCounter* counter() const { return counter_; }

 protected:
  void paintEvent(QPaintEvent*) override;

 private:
  void createControls();
  std::map<uint32_t, Button*> buttons_;
  std::map<uint32_t, QLabel*> fields_;
  UpDown* tempo_ = nullptr;
  SegmentCounter* counter_ = nullptr;
};

// The counter's text at a position: bar, beat and tick by the song's
// resolution and meter, "%0.5u:%0.2u:%0.3u".
QString CounterText(uint32_t ticks);

}  // namespace shell
