#include "generator/distributions.h"

#include <algorithm>

#include "generator/bank_fields.h"
#include "generator/raw_files.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"

std::array<std::string, DistributionCount> ColumnTitles = {"Notes", "Velocity", "Voices", "Density", "Length"};

uint32_t ShownView = 0;
std::span<Weight> ShownTable = LiveBank.noteWeights;
SharedWord<int16_t>* ShownSum = &NoteSum;
int32_t ShownMin = 0, ShownMax = 0;
int32_t ShownEntries = NoteEntries;
int32_t ColumnStep = 4, RowStep = 1, HalfStep = 2;
PlotGrid PlotRect{60, 50, NoteEntries, ShownRows, 4, 1};
int16_t CursorX = 0, CursorY = 0;

namespace {

struct ViewPlace {
  uint32_t view;
  uint32_t button;
  Distribution distribution;
};

constexpr ViewPlace ViewPlaces[] = {
    {NotesView, ID_DIST_NOTES, NotesDistribution},       {VelocityView, ID_DIST_VELOCITY, VelocityDistribution},
    {LengthView, ID_DIST_LENGTH, LengthDistribution},    {DensityView, ID_DIST_DENSITY, DensityDistribution},
    {VoicesView, ID_DIST_VOICES, VoicesDistribution},
};

const ViewPlace& placeOf(uint32_t view) {
  for (const ViewPlace& place : ViewPlaces) {
    if (place.view == view) return place;
  }
  return ViewPlaces[0];
}

// The record's fields from the shown table on, 128 of them, each as the short it is in the files.
struct ImageFromShownTable {
  const void* first;
  std::array<int16_t, DistributionFileValues>& image;
  std::size_t taken = 0;
  bool taking = false;

  template <class T, class Field>
  void field(Field& value) {
    if (static_cast<const void*>(&value) == first) taking = true;
    if (taking && taken < image.size()) image[taken++] = static_cast<int16_t>(static_cast<T>(value));
  }
};

void sumShownTable() { SumWeights(static_cast<int16_t>(ShownMin), static_cast<int16_t>(ShownMax), ShownTable, *ShownSum); }

// A zone's edge at entry n, kept on the plot: bounds that lie off the table
// (a damaged set-up) give an empty or a whole zone, never one past the plot.
int entryEdge(int32_t n) {
  return PlotRect.left + static_cast<int>(std::clamp<int32_t>(n, 0, ShownEntries)) * ColumnStep;
}

}  // namespace

uint32_t ViewButton(uint32_t view) { return placeOf(view).button; }

uint32_t ButtonView(uint32_t id) {
  for (const ViewPlace& place : ViewPlaces) {
    if (place.button == id) return place.view;
  }
  return 0;
}

void SelectShownView(uint32_t view) {
  const ViewPlace& place = placeOf(view);
  ShownView = place.view;
  ShownTable = DistributionWeights(place.distribution);
  ShownSum = &DistributionSum(place.distribution);
  ShownEntries = static_cast<int32_t>(ShownTable.size());
  ShownMin = LowerBound(place.distribution);
  ShownMax = UpperBound(place.distribution);
  ColumnStep = 512 / ShownEntries;
  RowStep = 128 / ShownRows;
  HalfStep = ColumnStep / 2;
  PlotRect = PlotGrid{60, 50, ShownEntries, ShownRows, ColumnStep, RowStep};
  CursorX = static_cast<int16_t>(PlotRect.left + (PlotRect.right() - PlotRect.left) / 2);
  CursorY = static_cast<int16_t>(PlotRect.top + (PlotRect.bottom() - PlotRect.top) / 2);
}

std::string ShownTitle() { return ColumnTitles[placeOf(ShownView).distribution]; }

void RefreshDistributions(platform::MessageTarget*) {
  if (DistributionsOpen != 1) return;
  SelectShownView(NotesView);
  RefreshIfOpen(DistributionsOpen, DistributionsWindow);  // button 200 checked, everything shown again
}

void SetShownWeight(PlotCell cell) {
  if (cell.column < 0 || cell.column >= ShownEntries || cell.row < 0 || cell.row >= ShownRows) return;
  ShownTable[static_cast<std::size_t>(cell.column)] = static_cast<int16_t>(PlotRect.valueOfRow(cell.row));
  sumShownTable();
}

void MoveCursorMarks(PlotCell cell) {
  CursorX = static_cast<int16_t>(PlotRect.columnX(cell.column));
  CursorY = static_cast<int16_t>(PlotRect.rowY(cell.row));
}

ZoneSpan BelowZone() { return {PlotRect.left, entryEdge(ShownMin)}; }

ZoneSpan AboveZone() { return {entryEdge(ShownMax + 1), PlotRect.right()}; }

int ZonesOver(int x) { return (BelowZone().contains(x) ? 1 : 0) + (AboveZone().contains(x) ? 1 : 0); }

// Under crossed bounds a column in both zones is shown as normal by the full
// paint; its one-bar redraw does the same rather than invert it once.
bool RedrawInverted(int x) { return ZonesOver(x) == 1; }

uint32_t BarViewCode(uint32_t bar) {
  static constexpr uint32_t Codes[DistributionCount] = {NotesView, VelocityView, 4, 8, 16};
  if (bar < ID_PANEL_FIRST_BAR || bar > ID_PANEL_LAST_BAR) return 0;
  return Codes[(bar - ID_PANEL_FIRST_BAR) / 2];
}

void CommitShownBound(uint32_t bar, int16_t v) {
  if ((ShownView & BarViewCode(bar)) == 0) return;
  const bool upper = (bar - ID_PANEL_FIRST_BAR) % 2 == 0;
  (upper ? ShownMax : ShownMin) = v;
}

std::array<int16_t, DistributionFileValues> ShownTableImage() {
  std::array<int16_t, DistributionFileValues> image{};
  ImageFromShownTable collect{ShownTable.data(), image};
  RecordBody(collect, LiveBank);
  return image;
}

int LoadShownTableFrom(const std::string& path) {
  const int handled = LoadDistributionFile(path, ShownTable);
  sumShownTable();
  return handled;
}

int SaveShownTableTo(const std::string& path) {
  const auto image = ShownTableImage();
  return SaveDistributionFile(path, image);
}

void LoadShownTable(platform::MessageTarget* window) {
  ReadDistributionFile(window, ShownTable);
  sumShownTable();
}

void SaveShownTable(platform::MessageTarget* window) {
  const auto image = ShownTableImage();
  WriteDistributionFile(window, image);
}
