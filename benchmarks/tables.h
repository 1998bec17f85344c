// Each function adds the benchmarks of the source file that has its name.
#pragma once

namespace sensorvela::benchmarks {

void AddAlternatives();
void AddSamplePath();
void AddEnqueue();
void AddErrorCap();
void AddDrain();
void AddHistogram();
void AddBuilders();
void AddBurst();
void AddBacklog();

}  // namespace sensorvela::benchmarks
