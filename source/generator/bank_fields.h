#pragma once
// The fields of a Bank record from the weight tables to the board curves, in
// the record's order, handed one by one to an Io that has field<T>(x). The
// parameter and bank files read and write through it, and the Distributions
// window builds the image of a saved table from it.

#include <cstdint>

// Io::field<T>(x): T is the width of the field in the files.
template <class Io, class B>
void RecordBody(Io& io, B& bank) {
  for (auto* table : {&bank.noteWeights, &bank.velocityWeights}) {
    for (auto& w : *table) io.template field<int16_t>(w);
  }
  for (auto& w : bank.lengthWeights) io.template field<int16_t>(w);
  for (auto& w : bank.densityWeights) io.template field<int16_t>(w);
  for (auto& w : bank.voiceWeights) io.template field<int16_t>(w);
  for (auto* bound : {&bank.noteMin, &bank.noteMax, &bank.velocityMin, &bank.velocityMax, &bank.voicesMin,
                      &bank.voicesMax, &bank.densityMin, &bank.densityMax, &bank.lengthMin, &bank.lengthMax}) {
    io.template field<int16_t>(*bound);
  }
  io.template field<uint16_t>(bank.channelMask);
  io.template field<int16_t>(bank.timeControl);
  for (auto& curve : bank.boardCurves) {
    for (auto& point : curve) io.template field<int16_t>(point);
  }
}
