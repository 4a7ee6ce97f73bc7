#pragma once
// Raw curve files ("*.bin"): 16-bit little-endian values with no header. The
// Functions window loads and saves its scratch curve in this form, the
// Distributions window the shown weight table. UI thread only.

#include <cstdint>
#include <span>
#include <string>

#include "generator/bank.h"
#include "platform/message_loop.h"

int ReadFunctionFile(platform::MessageTarget* window, std::span<int8_t> curve);
int WriteFunctionFile(platform::MessageTarget* window, std::span<const int8_t> curve);
int ReadDistributionFile(platform::MessageTarget* window, std::span<Weight> table);
// The Distributions window always saves 128 values, whichever table is in view.
int WriteDistributionFile(platform::MessageTarget* window, std::span<const int16_t> values);

// The same for a path already chosen.
int LoadFunctionFile(const std::string& path, std::span<int8_t> curve);
int LoadDistributionFile(const std::string& path, std::span<Weight> table);
int SaveDistributionFile(const std::string& path, std::span<const int16_t> values);
