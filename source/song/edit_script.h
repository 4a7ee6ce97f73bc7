#pragma once
// The Edit menu's commands without a window, for batch work on MIDI files:
// one edit given as a line of text, "COMMAND FIELD=VALUE ...", runs exactly
// the code that its dialog runs. The dialog opens as it would (its fields
// show what they would show), the named fields take the values given, OK is
// pressed, and when the dialog accepts, the edit runs on the selected tracks.
// So every check, quirk and message of the dialogs holds. A value may hold
// blanks: a word without "=" belongs to the value before it.
//
//   copy                                   from=TIME to=TIME
//   cut hole=0|1                           from=TIME to=TIME
//   paste repetitions=N time=TIME track=N mode=blend|replace|insert
//   quantize resolution=NAME|TICKS strength=N swing=N window=N offset=N start=0|1 durations=0|1
//   length percentage=N start=0|1 durations=0|1
//   transpose amount=N
//   velocity begin=N end=N
//   slide amount=X unit=measures|ticks
//
// Every command but paste takes from= and to= too; without them the region is
// the Control Bar's From and To, as the dialogs start from. Paste has no region
// of its own: Replace and Insert measure with the last one, as in the menu. UI thread only, with
// the transport stopped.

#include <string>

enum class EditScriptEnd {
  Done,
  Wrong,    // no such command, field or value: the reason is in error
  Refused,  // the dialog refused a field and showed its message through the prompts
};

EditScriptEnd RunEditScript(const std::string& line, std::string& error);

// The commands and their fields, for a program's help.
extern const char* EditScriptUsage;
