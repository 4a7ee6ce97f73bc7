#include "song/transform_dialogs.h"

#include <cstdlib>
#include <vector>

#include "platform/command_ids.h"
#include "platform/field_checks.h"
#include "song/region_edits.h"
#include "song/song_store.h"
#include "song/transforms.h"

const std::array<ResolutionItem, 9> ResolutionItems = {{{"Whole", 1},
                                                         {"Half", 2},
                                                         {"Quarter", 4},
                                                         {"Eighth", 8},
                                                         {"Eighth Triplet", 12},
                                                         {"Sixteenth", 16},
                                                         {"Sixteenth Triplet", 24},
                                                         {"32nd", 32},
                                                         {"32nd Triplet", 48}}};

namespace {

// One number of a dialog: its field, its range, and the setting it goes to.
struct NumberField {
  uint32_t id;
  int32_t low, high;
  int32_t* setting;  // null for the percentage and the slide amount, which keep texts of their own
  std::size_t length = 63;  // the characters the field holds
};

// The last accepted texts of the numeric fields, by dialog and field.
std::map<std::pair<uint32_t, uint32_t>, std::string>& acceptedTexts() {
  static std::map<std::pair<uint32_t, uint32_t>, std::string> texts;
  return texts;
}

// Length's percentage: the last accepted text of its field, 3 characters at most.
std::string& percentageText() {
  static std::string text;
  return text;
}

std::vector<NumberField> numberFields(uint32_t dialog) {
  switch (dialog) {
    case DLG_QUANTIZE:
      return {{ID_QUANTIZE_STRENGTH, 1, 100, &QuantizeStrength},
              {ID_QUANTIZE_SWING, 1, 99, &QuantizeSwing},
              {ID_QUANTIZE_WINDOW, 1, 100, &QuantizeWindow},
              {ID_QUANTIZE_OFFSET, -999, 999, &QuantizeOffset}};
    // The field holds 3 characters: a longer text, as "0500" from the command line, is read from its first three.
    case DLG_LENGTH: return {{ID_LENGTH_PERCENTAGE, 0, 999, nullptr, 3}};
    case DLG_SLIDE: return {{ID_TRANSFORM_AMOUNT, -32768, 32767, nullptr}};
    case DLG_TRANSPOSE: return {{ID_TRANSFORM_AMOUNT, -127, 127, &TransposeAmount}};
    // The two numbers are read as they stand, Begin before End, after the region.
    case DLG_VELOCITY: return {{ID_VELOCITY_BEGIN, 0, 127, &VelocityBegin}, {ID_VELOCITY_END, 0, 127, &VelocityEnd}};
    default: return {};
  }
}

bool checked(const TransformEntries& entries, uint32_t id) {
  const auto found = entries.checks.find(id);
  return found != entries.checks.end() && found->second;
}

void storeRegion(const TransformEntries& entries) {
  EditFrom = ParseTimeText(FieldText(entries.texts, ID_REGION_FROM).substr(0, 63));
  EditTo = ParseTimeText(FieldText(entries.texts, ID_REGION_TO).substr(0, 63));
}

void storeBoxes(uint32_t dialog, const TransformEntries& entries) {
  const uint32_t start = checked(entries, ID_CHANGE_START) ? 1 : 0;
  const uint32_t durations = checked(entries, ID_CHANGE_DURATIONS) ? 1 : 0;
  if (dialog == DLG_QUANTIZE) {
    QuantizeStart = start;
    QuantizeDuration = durations;
  } else {
    LengthStart = start;
    LengthDuration = durations;
  }
}

// The field trimmed and checked; when it passes, its text is the last accepted
// and its value goes to the setting. False when it is refused.
bool readNumber(uint32_t dialog, const NumberField& field, const TransformEntries& entries) {
  std::string text = FieldText(entries.texts, field.id).substr(0, field.length);
  TrimBlanks(text);
  if (CheckRange(text, field.low, field.high) == 0) return false;
  acceptedTexts()[{dialog, field.id}] = text;
  if (field.setting != nullptr) *field.setting = FieldValue(text);
  return true;
}

uint32_t readNumbers(uint32_t dialog, const TransformEntries& entries) {
  for (const NumberField& field : numberFields(dialog)) {
    if (!readNumber(dialog, field, entries)) return field.id;
  }
  return 0;
}

int32_t ticksPerMeasure() { return static_cast<int32_t>(SongResolution * Numerator); }

// The numbers as the dialog shows them at opening; what it shows is what a refusal puts back.
void showNumbers(uint32_t dialog, TransformEntries& entries) {
  for (const NumberField& field : numberFields(dialog)) {
    std::string text;
    if (field.setting != nullptr) {
      text = std::to_string(*field.setting);
    } else if (dialog == DLG_SLIDE) {
      text = std::to_string(static_cast<int32_t>(SlideAmount));
    } else {
      text = percentageText();  // empty until a percentage has been accepted
    }
    entries.texts[field.id] = text;
    acceptedTexts()[{dialog, field.id}] = text;
  }
}

}  // namespace

std::string ResolutionText(int32_t grid) {
  const int32_t divider = grid != 0 ? static_cast<int32_t>(SongResolution * 4) / grid : 0;
  for (const ResolutionItem& item : ResolutionItems) {
    if (item.divider == divider) return item.name;
  }
  return std::to_string(grid);
}

int32_t ResolutionGrid(const std::string& text) {
  const auto whole = static_cast<int32_t>(SongResolution * 4);
  int32_t grid = FieldValue(text);
  for (const ResolutionItem& item : ResolutionItems) {
    if (text == item.name) grid = whole / item.divider;
  }
  return grid < 1 ? 1 : grid;
}

TransformEntries OpenTransformDialog(uint32_t dialog) {
  EditFrom = SelectFrom;
  EditTo = SelectTo;
  TransformEntries entries;
  entries.texts[ID_REGION_FROM] = TimeText(EditFrom);
  entries.texts[ID_REGION_TO] = TimeText(EditTo);
  switch (dialog) {
    case DLG_QUANTIZE:
      entries.texts[ID_QUANTIZE_RESOLUTION] = ResolutionText(QuantizeGrid);
      entries.checks[ID_CHANGE_START] = QuantizeStart == 1;
      entries.checks[ID_CHANGE_DURATIONS] = QuantizeDuration == 1;
      break;
    case DLG_LENGTH:
      entries.checks[ID_CHANGE_START] = LengthStart == 1;
      entries.checks[ID_CHANGE_DURATIONS] = LengthDuration == 1;
      break;
    case DLG_SLIDE:
      if (SlideInTicks == 0) SlideAmount /= ticksPerMeasure();
      entries.checks[ID_SLIDE_MEASURES] = SlideInTicks == 0;
      entries.checks[ID_SLIDE_TICKS] = SlideInTicks == 1;
      break;
    default: break;
  }
  showNumbers(dialog, entries);
  return entries;
}

uint32_t AcceptTransformDialog(uint32_t dialog, const TransformEntries& entries) {
  uint32_t refused = 0;
  switch (dialog) {
    case DLG_QUANTIZE:
      storeRegion(entries);
      storeBoxes(dialog, entries);
      QuantizeGrid = ResolutionGrid(FieldText(entries.texts, ID_QUANTIZE_RESOLUTION));
      refused = readNumbers(dialog, entries);
      break;
    case DLG_LENGTH:
      if ((refused = readNumbers(dialog, entries)) != 0) break;
      percentageText() = acceptedTexts()[{dialog, ID_LENGTH_PERCENTAGE}];
      storeRegion(entries);
      storeBoxes(dialog, entries);
      break;
    case DLG_SLIDE:
      storeRegion(entries);
      SlideInTicks = checked(entries, ID_SLIDE_MEASURES) ? 0 : 1;
      if ((refused = readNumbers(dialog, entries)) != 0) break;
      SlideAmount = std::strtod(acceptedTexts()[{dialog, ID_TRANSFORM_AMOUNT}].c_str(), nullptr);
      if (SlideInTicks == 0) SlideAmount *= ticksPerMeasure();
      break;
    default:
      storeRegion(entries);
      refused = readNumbers(dialog, entries);
      break;
  }
  if (refused == 0) SongDirty = 1;
  return refused;
}

std::string AcceptedTransformText(uint32_t dialog, uint32_t field) { return acceptedTexts()[{dialog, field}]; }

void RunTransform(uint32_t dialog) {
  switch (dialog) {
    case DLG_QUANTIZE: QuantizeSelectedTracks(); return;
    case DLG_LENGTH: LengthSelectedTracks(FieldValue(percentageText())); return;
    case DLG_SLIDE: SlideSelectedTracks(); return;
    case DLG_TRANSPOSE: TransposeSelectedTracks(); return;
    case DLG_VELOCITY: VelocitySelectedTracks(); return;
    default: return;
  }
}
