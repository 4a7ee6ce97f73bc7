#pragma once
// The Functions window's logic, apart from drawing: the scratch curve drawn
// in the graph, applying it to one function with its clipping, picking a
// function up, the graph's scroll through long arrays, the thumbnails'
// sampling, and the Functions Settings dialog's decisions. UI thread only;
// the tick reads the arrays that apply writes, sample by sample.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "generator/bank.h"
#include "generator/plot_grid.h"
#include "platform/message_loop.h"

// The largest value each function may hold: the range of its bound's bar.
inline constexpr std::array<int, FunctionCount> FunctionUpperLimits = {127, 127, 32, 120, 100,
                                                                       127, 127, 32, 120, 100};
// The function on the other side of the same Distribution: Max n and Min n.
inline constexpr int OppositeFunction(int function) { return (function + 5) % FunctionCount; }

// Bit i: function i is overlaid on the graph. Cleared when the window opens.
extern uint32_t FunctionViewMask;
// The sample in the graph's first column. Cleared when the window opens.
extern int32_t GraphScroll;

// A pointer's sample in the graph: its index (the column plus the scroll) and its value.
struct GraphSample {
  int32_t index;
  int value;
};
GraphSample GraphSampleAt(PlotCell cell);
// Sets a sample of the scratch curve; false, and nothing set, past the end of the arrays.
bool SetScratchSample(GraphSample sample);
// A double click on a thumbnail: the function into the scratch curve.
void PickUpFunction(int function);

// An apply button (301..310): the scratch curve into its function, a Max
// never below its Min, a Min never above its Max, none above its limit.
// Returns how many samples were clipped, after saying so when there are any.
int ApplyScratchCurve(uint32_t id);

// The scroll's range, 0 to the last sample, in the control's 16 bits.
int32_t GraphScrollMaximum();
// GraphScroll kept within the range, never below 0.
void ClampGraphScroll();
// A new scroll position from the control; true when the graph must be drawn again.
bool ScrollGraph(int32_t position);

// The points of a function's thumbnail, relative to its top left corner: 64
// samples, each at x = f / step and y = (127 - value) / 2.
std::vector<PlotPoint> FunctionThumbnailPoints(int function);

// With the window open: its buttons, scroll and pictures made right again.
void RefreshFunctionsWindow(platform::MessageTarget* window);

// The Functions Settings dialog's OK: the periodic choice holds at once; a
// new length is refused while generating (the box says so) or when the
// arrays cannot be had. Closes tells whether the dialog may close.
struct FunctionsSettingsOutcome {
  bool closes;
  bool lengthChanged;
};
FunctionsSettingsOutcome ApplyFunctionsSettings(platform::MessageTarget* window, bool periodic,
                                                const std::string& lengthText);
// The length field's text as the dialog reads it: at most 24 characters, a
// decimal number, anything else 0, a negative number 0.
int32_t FunctionsLengthValue(const std::string& text);
