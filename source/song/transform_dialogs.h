#pragma once
// The dialogs of the five transforms, apart from drawing: what each shows at
// opening and what its OK stores, in its order. Every dialog has the region
// (From 2100, To 2103), read from at most 63 characters and not tested. A
// number out of its range shows the range message and comes back as the
// field's id: the field takes back its last accepted text, the dialog stays
// open, and what was stored before it stays stored. UI thread only.

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "platform/field_checks.h"

// A dialog's texts by field id (edits, and the Quantize combo box's text) and
// its check boxes and radio buttons by id.
struct TransformEntries {
  FieldTexts texts;
  std::map<uint32_t, bool> checks;
};

// The Quantize combo box's items, with the divider of four beats that each stands for.
struct ResolutionItem {
  const char* name;
  int32_t divider;
};
extern const std::array<ResolutionItem, 9> ResolutionItems;
// The combo box's text for a grid: the item whose divider gives it, else the ticks.
std::string ResolutionText(int32_t grid);
// The grid that a text of the combo box stands for; at least 1.
int32_t ResolutionGrid(const std::string& text);

// The dialog as it opens: the region from the Control Bar's From and To, the
// numbers and boxes from the settings. Slide in measures divides its amount
// in place, so a cancelled dialog leaves it divided.
TransformEntries OpenTransformDialog(uint32_t dialog);
// The OK of dialogs 118, 119, 121, 122 and 123: the refused field's id, or 0
// when all is stored and the song marked changed.
uint32_t AcceptTransformDialog(uint32_t dialog, const TransformEntries& entries);
// The last accepted text of a numeric field, which a refused field takes back.
std::string AcceptedTransformText(uint32_t dialog, uint32_t field);
// The transform of the dialog on the selected tracks, after its OK.
void RunTransform(uint32_t dialog);
