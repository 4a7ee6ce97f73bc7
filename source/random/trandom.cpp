#include "random/trandom.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

int32_t ix1, ix2, ix3;

namespace {

constexpr int32_t M1 = 259200, IA1 = 7141, IC1 = 54773;
constexpr int32_t M2 = 134456, IA2 = 8121, IC2 = 28411;
constexpr int32_t M3 = 243000, IA3 = 4561, IC3 = 51349;
constexpr double RM1 = 3.858024691358025e-6;  // 1 / M1
constexpr double RM2 = 7.437377283274826e-6;  // 1 / M2

// Entries 1..97 are used; entry 0 is never touched.
double shuffle[98];

// Signed 32-bit steps: C++ division truncates toward zero, so a negative state
// keeps a negative remainder, as the generator's arithmetic requires. The
// products stay far inside 32 bits for any state within the moduli.
void step1() { ix1 = (ix1 * IA1 + IC1) % M1; }
void step2() { ix2 = (ix2 * IA2 + IC2) % M2; }
void step3() { ix3 = (ix3 * IA3 + IC3) % M3; }

double tableValue() { return (ix1 + ix2 * RM2) * RM1; }

std::atomic<InternalErrorHandler> internalErrorHandler{nullptr};

// The error stream is told first: this runs on the timer thread, where no box
// can be shown; a handler that the application installed takes it from there.
[[noreturn]] void internalError() {
  const char* line = "tdrand() INTERNAL ERROR: source\\trandom";
  std::fprintf(stderr, "%s\n", line);
  std::fflush(stderr);
  if (InternalErrorHandler handler = internalErrorHandler.load()) handler(line);
  std::exit(1);
}

}  // namespace

void SetInternalErrorHandler(InternalErrorHandler handler) { internalErrorHandler.store(handler); }

void tdseed(int32_t seed) {
  // A seed above 2147428874 wraps here, as 32-bit addition does.
  ix1 = static_cast<int32_t>(static_cast<uint32_t>(seed) + static_cast<uint32_t>(IC1)) % M1;
  step1();
  ix2 = ix1 % M2;
  step1();
  ix3 = ix1 % M3;
  for (int j = 1; j <= 97; ++j) {
    step1();
    step2();
    shuffle[j] = tableValue();
  }
}

double tdrand() {
  step1();
  step2();
  step3();
  const int32_t j = (97 * ix3) / M3 + 1;
  if (j > 97 || j < 1) internalError();
  const double result = shuffle[j];
  shuffle[j] = tableValue();
  return result;
}
