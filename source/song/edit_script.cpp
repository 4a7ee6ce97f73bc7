#include "song/edit_script.h"

#include <map>
#include <sstream>

#include "platform/command_ids.h"
#include "song/region_edits.h"
#include "song/transform_dialogs.h"

const char* EditScriptUsage =
    "  copy\n"
    "  cut hole=0|1\n"
    "  paste repetitions=N time=TIME track=N mode=blend|replace|insert   (blend acts as insert, as in the dialog)\n"
    "  quantize resolution=NAME|TICKS strength=N swing=N window=N offset=N start=0|1 durations=0|1\n"
    "  length percentage=N start=0|1 durations=0|1\n"
    "  transpose amount=N\n"
    "  velocity begin=N end=N\n"
    "  slide amount=X unit=measures|ticks\n"
    "  Every command but paste also takes from=TIME and to=TIME; a field left out keeps what its dialog shows.\n";

namespace {

using Fields = std::map<std::string, std::string>;

// The words of the line: the command, then each name=value, a word without
// "=" joining the value before it.
bool split(const std::string& line, std::string& command, Fields& fields, std::string& error) {
  std::istringstream words(line);
  words >> command;
  std::string word, last;
  while (words >> word) {
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos) {
      if (last.empty()) {
        error = "'" + word + "' is no FIELD=VALUE";
        return false;
      }
      fields[last] += " " + word;
      continue;
    }
    last = word.substr(0, equals);
    fields[last] = word.substr(equals + 1);
  }
  if (command.empty()) {
    error = "an empty edit";
    return false;
  }
  return true;
}

// Fields named by text into a dialog's edits and boxes.
struct FieldNames {
  std::map<std::string, uint32_t> texts;
  std::map<std::string, uint32_t> boxes;  // 0 or 1
};

const std::map<std::string, std::pair<uint32_t, FieldNames>>& transformCommands() {
  static const std::map<std::string, std::pair<uint32_t, FieldNames>> commands = {
      {"quantize",
       {DLG_QUANTIZE,
        {{{"resolution", ID_QUANTIZE_RESOLUTION},
          {"strength", ID_QUANTIZE_STRENGTH},
          {"swing", ID_QUANTIZE_SWING},
          {"window", ID_QUANTIZE_WINDOW},
          {"offset", ID_QUANTIZE_OFFSET}},
         {{"start", ID_CHANGE_START}, {"durations", ID_CHANGE_DURATIONS}}}}},
      {"length",
       {DLG_LENGTH, {{{"percentage", ID_LENGTH_PERCENTAGE}}, {{"start", ID_CHANGE_START}, {"durations", ID_CHANGE_DURATIONS}}}}},
      {"transpose", {DLG_TRANSPOSE, {{{"amount", ID_TRANSFORM_AMOUNT}}, {}}}},
      {"velocity", {DLG_VELOCITY, {{{"begin", ID_VELOCITY_BEGIN}, {"end", ID_VELOCITY_END}}, {}}}},
      {"slide", {DLG_SLIDE, {{{"amount", ID_TRANSFORM_AMOUNT}}, {}}}},
  };
  return commands;
}

bool boxValue(const std::string& name, const std::string& value, bool& on, std::string& error) {
  if (value != "0" && value != "1") {
    error = name + "= takes 0 or 1, not '" + value + "'";
    return false;
  }
  on = value == "1";
  return true;
}

// Takes the region's fields out of the list, into the texts of From and To.
void takeRegion(Fields& fields, std::string& from, std::string& to) {
  for (auto [name, text] : {std::pair<const char*, std::string*>{"from", &from}, {"to", &to}}) {
    if (const auto found = fields.find(name); found != fields.end()) {
      *text = found->second;
      fields.erase(found);
    }
  }
}

bool noneLeft(const Fields& fields, const std::string& command, std::string& error) {
  if (fields.empty()) return true;
  error = command + " has no field '" + fields.begin()->first + "'";
  return false;
}

EditScriptEnd region(const std::string& command, Fields fields, std::string& error) {
  RegionTexts texts = OpenRegionDialog();
  takeRegion(fields, texts.from, texts.to);
  bool hole = DeleteHole == 1;
  if (command == "cut") {
    if (const auto found = fields.find("hole"); found != fields.end()) {
      if (!boxValue("hole", found->second, hole, error)) return EditScriptEnd::Wrong;
      fields.erase(found);
    }
  }
  if (!noneLeft(fields, command, error)) return EditScriptEnd::Wrong;
  if (command == "cut") {
    AcceptCutDialog(texts, hole);
    CutRegion();
  } else {
    AcceptRegionDialog(texts);
    CopyRegion();
  }
  return EditScriptEnd::Done;
}

EditScriptEnd paste(Fields fields, std::string& error) {
  PasteTexts texts = OpenPasteDialog();
  const std::pair<const char*, std::string*> named[] = {
      {"repetitions", &texts.repetitions}, {"time", &texts.time}, {"track", &texts.track}};
  for (auto [name, text] : named) {
    if (const auto found = fields.find(name); found != fields.end()) {
      *text = found->second;
      fields.erase(found);
    }
  }
  if (const auto found = fields.find("mode"); found != fields.end()) {
    const std::map<std::string, uint8_t> modes = {{"blend", PasteBlend}, {"replace", PasteReplace}, {"insert", PasteInsert}};
    const auto mode = modes.find(found->second);
    if (mode == modes.end()) {
      error = "mode= takes blend, replace or insert, not '" + found->second + "'";
      return EditScriptEnd::Wrong;
    }
    texts.mode = mode->second;
    fields.erase(found);
  }
  if (!noneLeft(fields, "paste", error)) return EditScriptEnd::Wrong;
  if (AcceptPasteDialog(texts.repetitions, texts.time, texts.track, texts.mode == PasteBlend,
                        texts.mode == PasteReplace) != 0) {
    return EditScriptEnd::Refused;
  }
  PasteRegion();
  return EditScriptEnd::Done;
}

EditScriptEnd transform(const std::string& command, uint32_t dialog, const FieldNames& names, Fields fields,
                        std::string& error) {
  TransformEntries entries = OpenTransformDialog(dialog);
  takeRegion(fields, entries.texts[ID_REGION_FROM], entries.texts[ID_REGION_TO]);
  for (const auto& [name, value] : Fields(fields)) {
    if (const auto text = names.texts.find(name); text != names.texts.end()) {
      entries.texts[text->second] = value;
    } else if (const auto box = names.boxes.find(name); box != names.boxes.end()) {
      if (!boxValue(name, value, entries.checks[box->second], error)) return EditScriptEnd::Wrong;
    } else if (dialog == DLG_SLIDE && name == "unit") {
      if (value != "measures" && value != "ticks") {
        error = "unit= takes measures or ticks, not '" + value + "'";
        return EditScriptEnd::Wrong;
      }
      entries.checks[ID_SLIDE_MEASURES] = value == "measures";
      entries.checks[ID_SLIDE_TICKS] = value == "ticks";
    } else {
      continue;
    }
    fields.erase(name);
  }
  if (!noneLeft(fields, command, error)) return EditScriptEnd::Wrong;
  if (AcceptTransformDialog(dialog, entries) != 0) return EditScriptEnd::Refused;
  RunTransform(dialog);
  return EditScriptEnd::Done;
}

}  // namespace

EditScriptEnd RunEditScript(const std::string& line, std::string& error) {
  std::string command;
  Fields fields;
  if (!split(line, command, fields, error)) return EditScriptEnd::Wrong;
  if (command == "copy" || command == "cut") return region(command, fields, error);
  if (command == "paste") return paste(fields, error);
  const auto found = transformCommands().find(command);
  if (found == transformCommands().end()) {
    error = "no edit '" + command + "' (copy, cut, paste, quantize, length, transpose, velocity, slide)";
    return EditScriptEnd::Wrong;
  }
  return transform(command, found->second.first, found->second.second, fields, error);
}
