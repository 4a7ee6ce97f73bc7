#pragma once
// The ten function arrays that move the Distributions' bounds while the
// generator runs, and the step that applies one element of each.
//
// Threads: the tick steps on the timer thread; everything else here runs on
// the UI thread. Replacing the arrays (ResizeFunctions) happens only while no
// pass can read them: with the generator off, or with the clock held off.

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "generator/bank.h"
#include "platform/message_loop.h"

// Index order of the arrays (and of a file and a stored bank): the five Max
// functions, then the five Min functions, each in Distribution order.
inline constexpr std::array<const char*, FunctionCount> FunctionLabels = {
    "Max Notes", "Max Velocity", "Max Voices", "Max Density", "Max Length",
    "Min Notes", "Min Velocity", "Min Voices", "Min Density", "Min Length"};

inline constexpr int32_t StartFunctionLength = 128;
// Longer arrays than this are refused as too much memory.
inline constexpr int32_t MaxFunctionLength = 1 << 24;

extern std::array<std::unique_ptr<int8_t[]>, FunctionCount> FunctionArrays;
extern std::unique_ptr<int8_t[]> ScratchCurve;  // the curve under edit in the Functions window
// What the tick and the first step read: normally FunctionArrays.
extern std::array<std::atomic<int8_t*>, FunctionCount> WorkingFunctions;
extern SharedWord<uint32_t> FunctionIndex;  // next element to step

// The Control Panel's bars, by id - ID_PANEL_FIRST_BAR, which the panel registers while it is open.
extern std::array<std::atomic<platform::MessageTarget*>, 10> ControlPanelBars;

// Allocates the arrays for the start-up length and fills them with the
// start-up curves: a sine over two octaves, velocity up and down, one and two voices.
bool InitFunctionArrays();
// Copies a curve of fromLength samples into one of size samples: what fits,
// then the last sample copied repeated (0 when none was).
void FitCurve(const int8_t* from, int32_t fromLength, int8_t* to, int32_t size);
// Points WorkingFunctions back at FunctionArrays.
void UseFunctionArrays();
// New arrays of size elements, the scratch curve among them, keeping what
// fits and repeating each array's last value into the rest. 1 for done; 0, with the memory message and the
// old arrays still in use, when they cannot be had. It does not set FunctionLength.
// A size of 0 keeps the arrays as they are and points WorkingFunctions back at them.
int ResizeFunctions(platform::MessageTarget* window, int32_t size);
void ApplyFirstStep();
void ApplyFunctionStep(uint32_t index);
void PostFunctionStep(uint32_t index);
void SwitchFunction(uint32_t id);  // 350..359
