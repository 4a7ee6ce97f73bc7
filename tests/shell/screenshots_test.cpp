// Pictures of the frame with the Control Panel and of every dialog, written
// into the build folder (screenshots/) to be looked at.
#include <QDir>
#include <QFileInfo>

#include "shell/about_dialog.h"
#include "shell/dialogs.h"
#include "shell/generator/control_panel_window.h"
#include "shell_bench.h"

namespace {

class Screenshots : public ShellBench {
 protected:
  QString folder() const { return QStringLiteral(QT_TESTCASE_BUILDDIR "/screenshots"); }
  // Shows the widget, lets it lay itself out, and writes its picture.
  void shoot(QWidget& widget, const QString& name) {
    widget.show();
    deliver();
    const QString path = folder() + u'/' + name + QStringLiteral(".png");
    ASSERT_TRUE(widget.grab().save(path)) << path.toStdString();
    EXPECT_GT(QFileInfo(path).size(), 1000) << path.toStdString();
  }
};

TEST_F(Screenshots, TheFrameWithTheControlPanelAndEveryDialogArePictured) {
  ASSERT_TRUE(QDir().mkpath(folder()));
  start();
  frame->resize(1024, 700);
  frame->takeClientRect();
  frame->command(24365);
  frame->command(1624);
  deliver();
  shoot(*frame, QStringLiteral("frame"));
  for (const auto& [id, name] : {std::pair{105u, "tempo"}, std::pair{109u, "resolution"}, std::pair{102u, "quantizar"},
                                 std::pair{106u, "from"}, std::pair{107u, "to"}, std::pair{108u, "goto"},
                                 std::pair{130u, "seed"}}) {
    auto dialog = shell::MakeFieldDialog(frame.get(), id);
    shoot(*dialog, QString::fromLatin1(name));
  }
  for (const auto& [id, name] : {std::pair{103u, "input-filters"}, std::pair{104u, "output-filters"},
                                 std::pair{101u, "quantize-filters"}}) {
    shell::FilterDialog dialog(frame.get(), id);
    shoot(dialog, QString::fromLatin1(name));
  }
  shell::MeterDialog meter(frame.get());
  shoot(meter, QStringLiteral("meter"));
  shell::MetronomeDialog metronome(frame.get());
  shoot(metronome, QStringLiteral("metronome"));
  shell::DevicesDialog devicesDialog(frame.get());
  shoot(devicesDialog, QStringLiteral("devices"));
  shell::AboutDialog about(frame.get());
  shoot(about, QStringLiteral("about"));
  shell::PitchSelectionDialog pitch(frame.get());
  shoot(pitch, QStringLiteral("pitch-selection"));
}

}  // namespace
