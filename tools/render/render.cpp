#include "render.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>

#include <signal.h>

#include "generator/bank.h"
#include "generator/control_panel.h"
#include "generator/functions.h"
#include "generator/generator_tick.h"
#include "generator/setup_files.h"
#include "midi/backends/device_list.h"
#include "midi/live_devices.h"
#include "midi/midi_event.h"
#include "midi/midi_in.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/file_io.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/prompts.h"
#include "platform/timers.h"
#include "platform/view_registry.h"
#include "random/trandom.h"
#include "smf/smf.h"
#include "song/clock_placing.h"
#include "song/edit_script.h"
#include "song/song_files.h"
#include "song/song_store.h"
#include "song/song_tempo.h"
#include "transport/playback_feed.h"
#include "transport/transport_commands.h"

using namespace platform;

std::string RenderUsage() {
  return std::string(
             "usage: velmora-render [--params FILE.vlm] [--seed N] [--seconds S] [--tempo BPM]\n"
             "                      [--resolution TPQ] [--period MS] [--non-periodic]\n"
             "                      [--log FILE|-] [--wav FILE] [--gain G] [--realtime] [--out N]\n"
             "                      [--midi OUT.mid]\n"
             "       velmora-render --song FILE.mid [--log FILE|-] [--wav FILE] [--gain G] [--realtime] [--out N]\n"
             "                      [--save OUT.mid] [--seconds S]\n"
             "                      [--select LIST] [--from TIME] [--to TIME] [--edit \"COMMAND FIELD=VALUE ...\"]...\n"
             "       velmora-render --record N --midi OUT.mid [--seconds S] [--midi-sync] [--out N] [--log FILE|-]\n"
             "\n"
             "--gain sets the built-in synthesizer's output gain, above 0 and at most 10 (default ") +
         SynthGainText(DefaultSynthGain) +
         "): the default set-up peaks near -3 dBFS,\n"
         "and half the gain is 6 dB quieter.\n"
         "--select takes one-based track numbers and ranges (1,3-5), --from and --to the counter's time\n"
         "(measure:beat:tick). Each --edit runs, in order and before the song is saved and played, the code\n"
         "of its dialog's OK with these fields; a refused field prints the dialog's message and exits 2:\n" +
         EditScriptUsage;
}

namespace {

// A drain that has not ended this long after the button went up is cut short.
constexpr uint32_t MaxDrainMs = 10 * 60 * 1000;

// ---- the log: every short message that reaches the output device ----

class Log {
 public:
  bool open(const std::string& path) {
    if (path == "-") {
      file_ = stdout;
      return true;
    }
    file_ = std::fopen(path.c_str(), "w");
    owned_ = file_ != nullptr;
    return owned_;
  }
  ~Log() {
    if (owned_) std::fclose(file_);
  }
  bool close() {
    const bool ok = file_ == nullptr || (std::fflush(file_) == 0 && !std::ferror(file_));
    if (owned_) std::fclose(file_);
    owned_ = false;
    file_ = nullptr;
    return ok;
  }
  void line(uint32_t word) {
    if (file_ == nullptr) return;
    const auto status = static_cast<uint8_t>(word);
    const uint32_t now = TheClock != nullptr ? TheClock->now.load() : 0;
    std::fprintf(file_, "%u %u %02X", ClockPassCount.load(), now, status);
    for (int i = 1; i <= MidiDataBytes(status); ++i) std::fprintf(file_, " %02X", word >> (8 * i) & 0xFF);
    std::fputc('\n', file_);
  }

 private:
  std::FILE* file_ = nullptr;
  bool owned_ = false;
};

// An output that logs what it is sent, then passes it on.
class LoggedPort final : public MidiOutPort {
 public:
  LoggedPort(std::unique_ptr<MidiOutPort> inner, Log& log) : inner_(std::move(inner)), log_(log) {}
  uint32_t shortMsg(uint32_t word) override {
    const uint32_t result = inner_->shortMsg(word);
    if (result == MMSYSERR_NOERROR) log_.line(word);
    return result;
  }
  uint32_t longMsg(MidiHeader& header) override { return inner_->longMsg(header); }
  uint32_t reset() override { return inner_->reset(); }
  uint32_t close() override { return inner_->close(); }

 private:
  std::unique_ptr<MidiOutPort> inner_;
  Log& log_;
};

class LoggedDevices final : public MidiDevices {
 public:
  LoggedDevices(MidiDevices& inner, Log& log) : inner_(inner), log_(log) {}
  uint32_t outCount() override { return inner_.outCount(); }
  uint32_t outName(uint32_t id, std::string& name) override { return inner_.outName(id, name); }
  uint32_t outOpen(uint32_t id, MidiOutCallbackFn callback, uintptr_t instance,
                   std::unique_ptr<MidiOutPort>& port) override {
    std::unique_ptr<MidiOutPort> opened;
    const uint32_t result = inner_.outOpen(id, callback, instance, opened);
    if (result == MMSYSERR_NOERROR) port = std::make_unique<LoggedPort>(std::move(opened), log_);
    return result;
  }
  uint32_t inCount() override { return inner_.inCount(); }
  uint32_t inName(uint32_t id, std::string& name) override { return inner_.inName(id, name); }
  uint32_t inOpen(uint32_t id, MidiInCallbackFn callback, uintptr_t instance,
                  std::unique_ptr<MidiInPort>& port) override {
    return inner_.inOpen(id, callback, instance, port);
  }

 private:
  MidiDevices& inner_;
  Log& log_;
};

// Messages the set-up code would show in a box: a headless run keeps the last,
// and answers No to every question but "Keep take?", which it answers Yes.
class QuietPrompts final : public Prompts {
 public:
  int messageBox(const std::string& text, const std::string&, uint32_t style) override {
    if (text == "Keep take?") return IDYES;
    last = text;
    return (style & 0xF) == MB_YESNO || (style & 0xF) == MB_YESNOCANCEL ? IDNO : IDOK;
  }
  std::optional<std::string> openFileName(const FileDialog&) override { return std::nullopt; }
  std::optional<std::string> saveFileName(const FileDialog&) override { return std::nullopt; }
  void beginWaitCursor() override {}
  void endWaitCursor() override {}
  std::string last;
};

// ---- argument parsing ----

bool number(const std::string& text, double& value) {
  char* end = nullptr;
  value = std::strtod(text.c_str(), &end);
  return !text.empty() && end != nullptr && *end == '\0' && std::isfinite(value);
}

// "1,3-5": one-based track numbers and ranges into the list; false on a wrong one.
bool trackList(const std::string& text, std::vector<uint32_t>& tracks) {
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t comma = std::min(text.find(',', start), text.size());
    const std::string item = text.substr(start, comma - start);
    const std::size_t dash = item.find('-');
    char* end = nullptr;
    const long first = std::strtol(item.c_str(), &end, 10);
    long last = first;
    if (dash != std::string::npos) {
      if (end != item.c_str() + dash) return false;
      last = std::strtol(item.c_str() + dash + 1, &end, 10);
    }
    if (item.empty() || *end != '\0' || first < 1 || last > static_cast<long>(SongTrackCount) || first > last) return false;
    for (long t = first; t <= last; ++t) tracks.push_back(static_cast<uint32_t>(t));
    start = comma + 1;
  }
  return true;
}

bool wholeNumber(const std::string& text, long long& value) {
  char* end = nullptr;
  value = std::strtoll(text.c_str(), &end, 10);
  return !text.empty() && end != nullptr && *end == '\0';
}

// The start-up state of the application with its built-in default settings.
void startUpState() {
  GeneratorStartUp();
  Playing = 0;
  Recording = 0;
  SongPosition = 0;
  SongResolution = 120;
}

// The line for a file that could not be read, with the system's reason once it has opened.
std::string cannotRead(const char* kind, const std::string& path, const FileContents& file) {
  std::string error = std::string("cannot read the ") + kind + " '" + path + "'";
  if (file.failure != ReadFailure::CannotOpen) error += ": " + file.reason;
  return error;
}

// The first four bytes of a file, to tell a parameter file from anything else.
bool checkParameterFile(const std::string& path, std::string& error) {
  const FileContents file = ReadWholeFile(path);
  if (!file.ok()) {
    error = cannotRead("parameter file", path, file);
    return false;
  }
  const std::vector<uint8_t>& bytes = file.bytes;
  if (!BeginsAsParameterFile(bytes)) {
    error = "'" + path + "' is not a Velmora parameter file (it does not begin with VLhd)";
    return false;
  }
  return true;
}

// ---- interruption: SIGINT, SIGTERM and SIGHUP end a run cleanly ----

std::atomic<int> interruptedBy{0};
static_assert(std::atomic<int>::is_always_lock_free, "set from a signal handler");

extern "C" void noteInterrupt(int signal) { interruptedBy.store(signal, std::memory_order_relaxed); }

bool interrupted() { return interruptedBy.load(std::memory_order_relaxed) != 0; }

// Catches the three signals while it lives, and puts the earlier handlers back.
class InterruptCatcher {
 public:
  InterruptCatcher() {
    interruptedBy = 0;
    struct sigaction action {};
    action.sa_handler = noteInterrupt;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < Signals.size(); ++i) sigaction(Signals[i], &action, &earlier_[i]);
  }
  ~InterruptCatcher() {
    for (std::size_t i = 0; i < Signals.size(); ++i) sigaction(Signals[i], &earlier_[i], nullptr);
  }
  InterruptCatcher(const InterruptCatcher&) = delete;
  InterruptCatcher& operator=(const InterruptCatcher&) = delete;

 private:
  static constexpr std::array<int, 3> Signals{SIGINT, SIGTERM, SIGHUP};
  std::array<struct sigaction, 3> earlier_{};
};

// After an interruption: the transport stops as Stop stops it (a take is
// kept), the clock stops, which ends every sounding note, and the
// controllers go back to their rest.
void endInterruptedRun(TransportWindow& controlBar) {
  if (Playing == 1 || Recording == 1) send(&controlBar, WM_COMMAND, CMD_STOP, 0);  // "Keep take?" is answered Yes
  Generating = 0;
  Draining = 0;
  StopSync(TheClock);
  ResetNotesAndControllers(TheMidiOut);
}

// Runs the clock while a condition holds, for at most some seconds, or until
// a signal interrupts the run: in real time, or pass by pass on the virtual
// timer with the messages delivered.
struct Runner {
  bool realtime;
  VirtualTimers& virtualTimers;
  ManualLoop& manualLoop;

  template <typename Condition>
  void runWhile(Condition running, double seconds) {
    if (realtime) {
      const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
      while (!interrupted() && running() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
      return;
    }
    const uint64_t endMs = uint64_t{virtualTimers.timeMs()} + static_cast<uint64_t>(seconds * 1000);
    while (!interrupted() && running() && virtualTimers.timeMs() < endMs) {
      virtualTimers.step();
      manualLoop.pump();
    }
  }
};

// The generator button pressed for the given seconds, then the drain.
void playGenerator(const RenderOptions& options, Runner& runner, TransportWindow& controlBar, QuietPrompts& prompts,
                   std::string& error, bool& refused) {
  if (!options.params.empty() && LoadParameterFile(nullptr, options.params) == 0) {
    error = "cannot load '" + options.params + "': " + prompts.last;
    return;
  }
  if (options.tempoBpm) SetSongTempo(static_cast<uint32_t>(60000000.0 / *options.tempoBpm));
  if (options.resolution) {
    SongResolution = *options.resolution;
    SetResolution(TheClock, static_cast<int32_t>(*options.resolution));
  }
  if (options.seed) Seed = *options.seed;
  if (!SeedInRange(Seed)) {
    error = "the set-up file '" + options.params + "' has the seed " + std::to_string(Seed.load()) +
            ", which the random source cannot take: give one from " + std::to_string(SeedMin) + " to " +
            std::to_string(SeedMax) + " with --seed";
    refused = true;
    return;
  }
  if (options.nonPeriodic) FunctionsPeriodic = 0;
  RefreshControlPanel(nullptr);
  CommitPanelFromBank();

  // A recorded run starts with Record, and the generator joins the take.
  if (!options.midi.empty()) send(&controlBar, WM_COMMAND, CMD_RECORD, 0);
  send(&controlBar, WM_COMMAND, CMD_GENERATE, 0);
  const auto running = [] { return Generating == 1 || Draining == 1; };
  runner.runWhile(running, options.seconds);
  // A non-periodic run may have ended by itself.
  if (Generating == 1 && !interrupted()) send(&controlBar, WM_COMMAND, CMD_GENERATE, 0);
  runner.runWhile(running, MaxDrainMs / 1000.0);
  if (running()) {  // cut short: what still sounds is ended
    Generating = 0;
    Draining = 0;
    StopSync(TheClock);
  }
  if (!options.midi.empty()) send(&controlBar, WM_COMMAND, CMD_STOP, 0);  // "Keep take?" is answered Yes
}

// What an input device plays, recorded for the given seconds in real time.
void recordInput(const RenderOptions& options, Runner& runner, TransportWindow& controlBar) {
  if (options.midiSync) send(&controlBar, WM_COMMAND, CMD_MIDI_SYNC, 0);
  send(&controlBar, WM_COMMAND, CMD_RECORD, 0);
  runner.runWhile([] { return Recording == 1; }, options.seconds);
  if (Recording == 1) send(&controlBar, WM_COMMAND, CMD_STOP, 0);  // "Keep take?" is answered Yes
}

// The input that a recorded run takes down: the device asked for, or input 0,
// which nothing plays into here, for the generator's notes alone.
uint32_t openInput(const RenderOptions& options, TransportWindow& controlBar, std::string& error) {
  const uint32_t device = options.record.value_or(0);
  const uint32_t opened = OpenMidiIn(&TheMidiIn, &controlBar, device, TheClock, MIDI_OPEN_WORD);
  if (opened != 0) {
    error = "cannot open input device " + std::to_string(device) + ": " + midiInGetErrorText(opened);
    return opened;
  }
  StartMidiIn(TheMidiIn);
  return 0;
}

// A song loaded, saved if asked, and played until its end stops the transport.
// The selection, the region and the edits of the command line on the loaded
// song; false with the reason when an edit is wrong or its dialog refused it.
bool editSong(const RenderOptions& options, QuietPrompts& prompts, std::string& error) {
  SelectedTrackCount = 0;
  for (uint32_t track : options.select) {
    if (SelectedTrackCount < static_cast<int32_t>(SongTrackCount)) SelectedTracks[static_cast<std::size_t>(SelectedTrackCount++)] = track - 1;
  }
  std::sort(SelectedTracks.begin(), SelectedTracks.begin() + SelectedTrackCount);
  SelectedTrackCount = static_cast<int32_t>(
      std::unique(SelectedTracks.begin(), SelectedTracks.begin() + SelectedTrackCount) - SelectedTracks.begin());
  if (!options.from.empty()) SelectFrom = ParseTimeText(options.from);
  if (!options.to.empty()) SelectTo = ParseTimeText(options.to);
  for (const std::string& line : options.edits) {
    prompts.last.clear();
    std::string reason;
    const EditScriptEnd end = RunEditScript(line, reason);
    if (end == EditScriptEnd::Done) continue;
    error = "--edit '" + line + "': " + (end == EditScriptEnd::Refused ? prompts.last : reason);
    return false;
  }
  return true;
}

void playSong(const RenderOptions& options, Runner& runner, TransportWindow& controlBar, QuietPrompts& prompts,
              std::string& error, bool& refused) {
  if (const FileContents file = ReadWholeFile(options.song); !file.ok()) {
    error = cannotRead("MIDI file", options.song, file);
    return;
  }
  LoadSong(options.song);
  if (!prompts.last.empty()) {
    error = "cannot load '" + options.song + "': " + prompts.last;
    return;
  }
  if (!editSong(options, prompts, error)) {
    refused = true;
    return;
  }
  if (!options.save.empty() && WriteSong(options.save) == 0) {
    error = "cannot write the MIDI file '" + options.save + "'";
    return;
  }
  // The transport's commands run on the loop's thread, as the Control Bar's do.
  send(&controlBar, WM_COMMAND, CMD_PLAY, 0);
  // Without --seconds the song plays to its end; a day is the most any run lasts.
  runner.runWhile([] { return Playing == 1; }, options.secondsGiven ? options.seconds : 24 * 3600.0);
  if (Playing == 1) send(&controlBar, WM_COMMAND, CMD_STOP, 0);
}

void run(const RenderOptions& options, Runner& runner, TransportWindow& controlBar, QuietPrompts& prompts,
         std::string& error, bool& refused) {
  if (options.record) {
    recordInput(options, runner, controlBar);
  } else if (options.song.empty()) {
    playGenerator(options, runner, controlBar, prompts, error, refused);
  } else {
    playSong(options, runner, controlBar, prompts, error, refused);
  }
}

}  // namespace

std::optional<RenderOptions> ParseRenderArguments(const std::vector<std::string>& arguments, std::string& error) {
  RenderOptions options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& flag = arguments[i];
    auto value = [&](std::string& out) {
      if (i + 1 >= arguments.size()) {
        error = flag + " needs a value";
        return false;
      }
      out = arguments[++i];
      return true;
    };
    std::string text;
    double real = 0;
    long long whole = 0;
    if (flag == "--non-periodic") {
      options.nonPeriodic = true;
    } else if (flag == "--realtime") {
      options.realtime = true;
    } else if (flag == "--midi-sync") {
      options.midiSync = true;
    } else if (flag == "--params" || flag == "--log" || flag == "--wav" || flag == "--song" || flag == "--save" ||
               flag == "--midi") {
      if (!value(text)) return std::nullopt;
      (flag == "--params" ? options.params
       : flag == "--log"  ? options.log
       : flag == "--wav"  ? options.wav
       : flag == "--song" ? options.song
       : flag == "--midi" ? options.midi
                          : options.save) = text;
    } else if (flag == "--select") {
      if (!value(text)) return std::nullopt;
      if (!trackList(text, options.select)) {
        error = "--select takes one-based track numbers from 1 to 256 and ranges, as 1,3-5, not '" + text + "'";
        return std::nullopt;
      }
    } else if (flag == "--from" || flag == "--to" || flag == "--edit") {
      if (!value(text)) return std::nullopt;
      if (flag == "--edit") {
        options.edits.push_back(text);
      } else {
        (flag == "--from" ? options.from : options.to) = text;
      }
    } else if (flag == "--seed") {
      if (!value(text)) return std::nullopt;
      if (!wholeNumber(text, whole) || !SeedInRange(whole)) {
        error = "--seed takes a whole number from " + std::to_string(SeedMin) + " to " + std::to_string(SeedMax) +
                " (the random source's range), not '" + text + "'";
        return std::nullopt;
      }
      options.seed = static_cast<int32_t>(whole);
    } else if (flag == "--seconds") {
      if (!value(text)) return std::nullopt;
      if (!number(text, real) || real < 0 || real > 24 * 3600) {
        error = "--seconds takes a number of seconds from 0 to 86400, not '" + text + "'";
        return std::nullopt;
      }
      options.seconds = real;
      options.secondsGiven = true;
    } else if (flag == "--tempo") {
      if (!value(text)) return std::nullopt;
      if (!number(text, real) || real < 1 || real > 1000) {
        error = "--tempo takes beats per minute from 1 to 1000, not '" + text + "'";
        return std::nullopt;
      }
      options.tempoBpm = real;
    } else if (flag == "--resolution") {
      if (!value(text)) return std::nullopt;
      if (!wholeNumber(text, whole) || whole < 1 || whole > 960) {
        error = "--resolution takes ticks per quarter note from 1 to 960, not '" + text + "'";
        return std::nullopt;
      }
      options.resolution = static_cast<uint32_t>(whole);
    } else if (flag == "--gain") {
      if (!value(text)) return std::nullopt;
      const std::optional<double> gain = ReadSynthGain(text);
      if (!gain) {
        error = "--gain takes a number above 0 and at most " + SynthGainText(MaxSynthGain) +
                ", the synthesizer's gain (default " + SynthGainText(DefaultSynthGain) + ")";
        return std::nullopt;
      }
      options.gain = *gain;
    } else if (flag == "--period") {
      if (!value(text)) return std::nullopt;
      if (!wholeNumber(text, whole) || whole < 1 || whole > 1000) {
        error = "--period takes milliseconds from 1 to 1000, not '" + text + "'";
        return std::nullopt;
      }
      options.periodMs = static_cast<uint32_t>(whole);
    } else if (flag == "--out" || flag == "--record") {
      if (!value(text)) return std::nullopt;
      const bool out = flag == "--out";
      if (!wholeNumber(text, whole) || whole < 0 || whole > 0xFFFF) {
        error = flag + " takes " + (out ? "an output" : "an input") + " device number (see velmora-devices), not '" +
                text + "'";
        return std::nullopt;
      }
      (out ? options.out : options.record.emplace()) = static_cast<uint32_t>(whole);
    } else {
      error = "unknown argument '" + flag + "' (try --help)";
      return std::nullopt;
    }
  }
  if (!options.song.empty() && (!options.params.empty() || options.seed || options.tempoBpm || options.resolution ||
                                options.nonPeriodic)) {
    error = "--song plays a MIDI file as it is and cannot go with --params, --seed, --tempo, --resolution or "
            "--non-periodic";
    return std::nullopt;
  }
  if (!options.save.empty() && options.song.empty()) {
    error = "--save writes a loaded song and needs --song";
    return std::nullopt;
  }
  if ((!options.edits.empty() || !options.select.empty() || !options.from.empty() || !options.to.empty()) &&
      options.song.empty()) {
    error = "--edit, --select, --from and --to edit a loaded song and need --song";
    return std::nullopt;
  }
  if (options.record) {
    if (options.midi.empty()) {
      error = "--record takes down an input and needs --midi OUT.mid to write it to";
      return std::nullopt;
    }
    if (!options.song.empty() || !options.wav.empty() || !options.params.empty()) {
      error = "--record takes down an input in real time and cannot go with --song, --wav or --params";
      return std::nullopt;
    }
    options.realtime = true;  // a device plays in real time
  }
  if (options.midiSync && !options.record) {
    error = "--midi-sync follows an input's MIDI clock and needs --record";
    return std::nullopt;
  }
  if (!options.midi.empty() && !options.song.empty()) {
    error = "--midi records the generator or an input, not a song (use --save to write a song)";
    return std::nullopt;
  }
  if (options.gain && options.wav.empty() && !options.realtime) {
    error = "--gain sets the built-in synthesizer's level and goes with --wav or --realtime";
    return std::nullopt;
  }
  if (options.realtime && !options.wav.empty()) {
    error = "--wav renders in virtual time and cannot go with --realtime";
    return std::nullopt;
  }
  return options;
}

bool Render(const RenderOptions& options, std::string& error) { return RenderRun(options, error) == RenderEnd::Done; }

RenderEnd RenderRun(const RenderOptions& options, std::string& error) {
  bool refused = false;
  const InterruptCatcher catcher;
  if (!options.params.empty() && !checkParameterFile(options.params, error)) return RenderEnd::Failed;
  // Before the synthesizer opens, whose failure to create the file would read as a device's.
  if (!options.wav.empty() && !CanWriteFile(options.wav)) {
    error = "cannot write the WAV file '" + options.wav + "'";
    return RenderEnd::Failed;
  }

  Log log;
  if (!options.log.empty() && !log.open(options.log)) {
    error = "cannot write the log '" + options.log + "'";
    return RenderEnd::Failed;
  }

  // Devices: a real one in real time, the synthesizer for a WAV, else nowhere.
  // Virtual time also has an input that nothing plays into, for a recorded
  // generator run; in real time the loopback input is that one.
  std::unique_ptr<StandardDevices> standard;
  std::unique_ptr<SynthDevices> synth;
  LoopbackDevices silent(1, 0);
  LoopbackDevices quiet(0, 1);
  DeviceList virtualDevices;
  MidiDevices* inner = &virtualDevices;
  uint32_t out = 0;
  if (options.realtime) {
    standard = std::make_unique<StandardDevices>();
    inner = &standard->list;
    out = options.out;
    if (options.gain) standard->synth.setSynthGain(*options.gain);
  } else if (!options.wav.empty()) {
    synth = std::make_unique<SynthDevices>();
    synth->renderTo(options.wav);
    if (options.gain) synth->setSynthGain(*options.gain);
    virtualDevices.add(synth.get());
  } else {
    virtualDevices.add(&silent);
  }
  virtualDevices.add(&quiet);
  LoggedDevices devices(*inner, log);

  VirtualTimers virtualTimers;
  ThreadTimers realTimers;
  ManualLoop manualLoop;
  std::unique_ptr<ThreadedLoop> threadedLoop;
  if (options.realtime) threadedLoop = std::make_unique<ThreadedLoop>();
  QuietPrompts prompts;
  const InstalledSeams seams({.loop = options.realtime ? static_cast<MessageLoop*>(threadedLoop.get()) : &manualLoop,
                              .timers = options.realtime ? static_cast<Timers*>(&realTimers) : &virtualTimers,
                              .devices = &devices,
                              .prompts = &prompts});

  startUpState();
  ClockPassCount = 0;  // the log counts this run's passes
  ClockHooks = {};
  InstallGeneratorHooks();
  InstallFeedHooks();
  TransportWindow controlBar;
  ControlBarWindow = &controlBar;
  OpenSync(&TheClock, &controlBar, SYNC_INTERNAL, options.periodMs);
  const uint32_t opened = OpenMidiOut(&TheMidiOut, &controlBar, out, TheClock, MIDI_OPEN_WORD);
  if (opened != 0) {
    error = "cannot open output device " + std::to_string(out) + ": " + midiInGetErrorText(opened);
    CloseSync(&TheClock);
    ControlBarWindow = nullptr;
    return RenderEnd::Failed;
  }
  ResetSong();  // 120 ticks a quarter at 60 beats a minute

  Runner runner{options.realtime, virtualTimers, manualLoop};
  if (!options.midi.empty()) openInput(options, controlBar, error);
  if (error.empty()) run(options, runner, controlBar, prompts, error, refused);
  if (interrupted()) endInterruptedRun(controlBar);
  if (!options.realtime) virtualTimers.advance(1000);  // a second for the last notes to ring out
  if (!options.midi.empty() && error.empty() && WriteSong(options.midi) == 0) {
    error = "cannot write the MIDI file '" + options.midi + "'";
  }

  if (synth && !synth->finishRender() && error.empty()) error = "cannot write the WAV file '" + options.wav + "'";
  CloseSync(&TheClock);
  CloseMidiIn(&TheMidiIn);
  CloseMidiOut(&TheMidiOut);
  if (threadedLoop) threadedLoop->stop();
  manualLoop.pump();
  ControlBarWindow = nullptr;
  ClockHooks = {};
  if (!log.close() && error.empty()) error = "cannot write the log '" + options.log + "'";
  if (error.empty() && interrupted()) {
    error = std::string("stopped by SIG") + sigabbrev_np(interruptedBy.load()) +
            ": every sounding note was ended, and what the run made was written";
    return RenderEnd::Interrupted;
  }
  if (error.empty()) return RenderEnd::Done;
  return refused ? RenderEnd::Refused : RenderEnd::Failed;
}

int RenderInterruptSignal() { return interruptedBy.load(); }
