// What there is to measure; each adds its rows, and stands in the file of its name.
#pragma once

namespace sensorvela::benchmarks {

void AddSamplePath();
void AddEnqueue();
void AddErrorCap();
void AddDrain();
void AddHistogram();
void AddBuilders();
void AddScale();
void AddBacklog();

}  // namespace sensorvela::benchmarks
