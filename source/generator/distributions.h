#pragma once
// The Distributions window's logic, apart from drawing: which of the five
// weight tables is in view, the plot's geometry, a pointer's entry and weight,
// setting a weight and summing over the view's own copy of the bounds, the
// zones outside the bounds, the titles, and the load and save of the shown
// table. UI thread only; what it writes into the live Bank the draw reads at
// its next chord.

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "generator/bank.h"
#include "generator/plot_grid.h"
#include "platform/message_loop.h"

// The titles of the five Distributions in the Control Panel's column order.
// Entry 0 reads "Notes" or "Intervals" after the pitch mode; every window
// takes the Notes title from here.
extern std::array<std::string, DistributionCount> ColumnTitles;

// The view codes.
inline constexpr uint32_t NotesView = 1;
inline constexpr uint32_t VelocityView = 2;
inline constexpr uint32_t LengthView = 4;
inline constexpr uint32_t DensityView = 8;
inline constexpr uint32_t VoicesView = 16;

// The view state: the table in view, inside the live Bank, and the view's own
// copy of its bounds, which only a view change, the window's activation and
// the Control Panel's commit write.
extern uint32_t ShownView;
extern std::span<Weight> ShownTable;
extern SharedWord<int16_t>* ShownSum;
extern int32_t ShownMin, ShownMax;
extern int32_t ShownEntries;
inline constexpr int32_t ShownRows = 128;
extern int32_t ColumnStep, RowStep, HalfStep;
// Left 60, top 50, bottom 178; the right follows the entries.
extern PlotGrid PlotRect;
extern int16_t CursorX, CursorY;

// The view buttons: 200 Notes, 201 Velocity, 202 Length, 203 Density, 204 Voices.
uint32_t ViewButton(uint32_t view);
// The view of a button, or 0.
uint32_t ButtonView(uint32_t id);

// Sets the view state for a view code and reads its bounds from the Bank;
// the cursor marks go to the middle of the plot. An unknown code selects Notes.
void SelectShownView(uint32_t view);
// The title of the shown table, as label 2552 shows it.
std::string ShownTitle();
// With the window open: the Notes view, button 200 checked, all shown again.
void RefreshDistributions(platform::MessageTarget* window);

// Sets the weight of a cell of the plot (127 at the top row) and sums the
// shown table over the view's copy of the bounds.
void SetShownWeight(PlotCell cell);
// The cursor marks snapped to a cell: x in the middle of its column, y on its row.
void MoveCursorMarks(PlotCell cell);

// The zones outside the bounds, as x ranges over the plot's full height; a
// zone with left >= right is empty. Below: from the plot's left to entry
// ShownMin; above: from entry ShownMax + 1 to the plot's right.
struct ZoneSpan {
  int left;
  int right;
  bool contains(int x) const { return x >= left && x < right; }
  bool empty() const { return left >= right; }
};
ZoneSpan BelowZone();
ZoneSpan AboveZone();
// How many zones cover an x: the full paint inverts once per zone, so a
// column under both (crossed bounds) shows as it is.
int ZonesOver(int x);
// Whether the one-bar redraw at x draws the bar inverted.
bool RedrawInverted(int x);

// The Control Panel's commit of a bound bar (1280..1289) at v: writes the
// view's copy when the bar's code matches ShownView. The Voices bars carry
// code 4 and the Length bars 16, the reverse of the view codes, so each
// updates the copy while the other is in view.
uint32_t BarViewCode(uint32_t bar);
void CommitShownBound(uint32_t bar, int16_t v);

// The image of a saved table: 128 values taken field by field from the live
// record, from the shown table on, so a short table runs on into the fields
// that follow it (27 of Density after Length, 7 of Voices after Density, the
// bounds and more after Voices).
inline constexpr std::size_t DistributionFileValues = 128;
std::array<int16_t, DistributionFileValues> ShownTableImage();
// Load (402) and save (403) of the shown table through the file dialogs; a
// load sums the table again whatever it reports.
void LoadShownTable(platform::MessageTarget* window);
void SaveShownTable(platform::MessageTarget* window);
// The same for a path already chosen.
int LoadShownTableFrom(const std::string& path);
int SaveShownTableTo(const std::string& path);
