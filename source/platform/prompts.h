#pragma once
// The prompts seam: message boxes, the open and save file choosers, and the
// wait cursor, with the platform's style bits and answers.

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// Message box styles and answers.
inline constexpr uint32_t MB_OK = 0x0;
inline constexpr uint32_t MB_YESNOCANCEL = 0x3;
inline constexpr uint32_t MB_YESNO = 0x4;
inline constexpr uint32_t MB_ICONSTOP = 0x10;
inline constexpr uint32_t MB_ICONQUESTION = 0x20;
inline constexpr uint32_t MB_ICONEXCLAMATION = 0x30;
inline constexpr uint32_t MB_ICONINFORMATION = 0x40;
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

struct FileFilter {
  std::string label;    // "Velmora Files(*.vlm)"
  std::string pattern;  // "*.vlm"
  bool operator==(const FileFilter&) const = default;
};

struct FileDialog {
  std::string title;
  std::vector<FileFilter> filters;
  std::string initialDirectory;
  std::string defaultExtension;
  bool mustExist = false;       // the file and its path must exist (open)
  bool askToOverwrite = false;  // ask before replacing a file (save)
};

class Prompts {
 public:
  virtual ~Prompts() = default;
  // Shows a box and returns the button pressed: IDOK, IDCANCEL, IDYES or IDNO.
  virtual int messageBox(const std::string& text, const std::string& title, uint32_t style) = 0;
  // The chosen file's full path, or nothing when the user cancels.
  virtual std::optional<std::string> openFileName(const FileDialog& dialog) = 0;
  virtual std::optional<std::string> saveFileName(const FileDialog& dialog) = 0;
  // Nested: the cursor is back once every begin has had its end.
  virtual void beginWaitCursor() = 0;
  virtual void endWaitCursor() = 0;
};

void installPrompts(Prompts* prompts);
Prompts* prompts();

// Shows a box through the installed prompts. With none installed nobody can
// answer, and the box answers as its safest button: Cancel, No, or OK.
int ShowMessageBox(const std::string& text, const std::string& title, uint32_t style);

// Shows the wait cursor for the life of the object.
class WaitCursor {
 public:
  WaitCursor();
  ~WaitCursor();
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;
};

// The test's prompts: records everything shown and gives planned answers, in
// order. With no answer planned, a box answers as its safest button (Cancel,
// No, or OK) and a file chooser as cancelled, and the call counts as unplanned.
class ScriptedPrompts final : public Prompts {
 public:
  enum class Kind { MessageBox, OpenFile, SaveFile };
  struct Shown {
    Kind kind;
    std::string text;   // box text, or the chooser's title
    std::string title;  // box title
    uint32_t style = 0;
    FileDialog dialog;
  };

  int messageBox(const std::string& text, const std::string& title, uint32_t style) override;
  std::optional<std::string> openFileName(const FileDialog& dialog) override;
  std::optional<std::string> saveFileName(const FileDialog& dialog) override;
  void beginWaitCursor() override;
  void endWaitCursor() override;

  void planAnswer(int button) { answers_.push_back(button); }
  void planFile(std::optional<std::string> path) { files_.push_back(std::move(path)); }

  const std::vector<Shown>& shown() const { return shown_; }
  int unplanned() const { return unplanned_; }
  int waitDepth() const { return waitDepth_; }
  int waitCursorShows() const { return waitShows_; }
  std::size_t answersLeft() const { return answers_.size() + files_.size(); }

 private:
  std::optional<std::string> chooseFile(Kind kind, const FileDialog& dialog);

  std::vector<Shown> shown_;
  std::deque<int> answers_;
  std::deque<std::optional<std::string>> files_;
  int unplanned_ = 0;
  int waitDepth_ = 0;
  int waitShows_ = 0;
};

}  // namespace platform

// The folders each kind of file dialog opens in; each takes the folder of
// the last file of its kind. UI thread only.
extern std::string MidiFilesDir, VelmoraFilesDir, DistributionFilesDir, FunctionFilesDir;
