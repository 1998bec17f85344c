// Each function adds the benchmarks of the source file that has its name.
#pragma once

namespace sensorvela::benchmarks {

void AddSamplePath();
void AddEnqueue();
void AddErrorCap();
void AddDrain();
void AddHistogram();
void AddBuilders();
void AddBurst();
void AddScale();
void AddBacklog();

}  // namespace sensorvela::benchmarks
