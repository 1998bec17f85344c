#include "tests/simulation/simulation.h"

int main(int argc, char** argv) {
  sensorvela::testing::SimulationObserver observer;
  return sensorvela::testing::RunSimulation(argc, argv, observer);
}
