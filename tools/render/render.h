#pragma once
// A headless run of the generator or of a song: the real clock pass, the real
// generator, the real song loader and playback feed, on the virtual timer as
// fast as the machine goes, or in real time on a device. What reaches the
// output can be logged, and rendered to WAV through the built-in synthesizer.
// A run can also be taken down: the generator's notes, or what an input
// device plays, recorded as a take, kept, and written as a MIDI file.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct RenderOptions {
  std::string params;                  // a parameter file to load, or none
  std::optional<int32_t> seed;         // overrides the set-up's Seed
  double seconds = 30;                 // how long the generator button stays pressed
  bool secondsGiven = false;           // a song plays to its end unless --seconds is given
  std::string song;                    // a MIDI file to play instead of the generator
  std::string save;                    // where to write the loaded song, by Save as
  std::optional<double> tempoBpm;      // overrides the file's tempo; 60 without a file
  std::optional<uint32_t> resolution;  // overrides the file's; 120 without a file
  uint32_t periodMs = 10;
  bool nonPeriodic = false;
  std::string log;  // "-" for the standard output
  std::string wav;
  std::optional<double> gain;  // the built-in synthesizer's gain; its default without
  bool realtime = false;
  uint32_t out = 0;  // output device for a real-time run
  std::string midi;               // records the run and writes the take as a MIDI file
  std::optional<uint32_t> record;  // records this input device instead of the generator
  bool midiSync = false;          // the clock follows the input's MIDI clock while recording
  // Edits of the loaded song before it is saved and played: the tracks they
  // act on (one-based), the region (the Control Bar's From and To), and each
  // edit as a line of its dialog's fields, run in order.
  std::vector<uint32_t> select;
  std::string from, to;
  std::vector<std::string> edits;
};

// Reads the command line; nothing, with the reason in error, if it is wrong.
std::optional<RenderOptions> ParseRenderArguments(const std::vector<std::string>& arguments, std::string& error);

// How a run ended: the program's exit status.
enum class RenderEnd { Done = 0, Failed = 1, Refused = 2, Interrupted = 3 };

// Runs it; false with one clear line in error when something fails.
bool Render(const RenderOptions& options, std::string& error);
// The same, telling a run that failed from one refused before it began (a
// set-up file's seed that the random source cannot take), which is the
// command line's fault as a wrong argument is.
RenderEnd RenderRun(const RenderOptions& options, std::string& error);
// While a run goes, SIGINT, SIGTERM and SIGHUP stop it cleanly: the clock
// stops, every sounding note ends, the controllers are reset, the take is kept
// and written, the log flushed; the run then ends as Interrupted, by this signal.
int RenderInterruptSignal();

// The usage, with the edits that --edit runs.
std::string RenderUsage();
