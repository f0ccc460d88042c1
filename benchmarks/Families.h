#pragma once

#include "benchmarks/Comparison.h"

namespace Benchmarks {

// One function for each family of rows. `main.cpp` calls them in this order.

void lifeOfAnAction(Report& report);
void refresh(Report& report);
void fallbackChain(Report& report);
void startUp(Report& report);
void publication(Report& report);
void collection(Report& report);
void pointers(Report& report);
void messages(Report& report);
void records(Report& report);
void memory(Report& report);
void softChip(Report& report);
void loading(Report& report);

}  // namespace Benchmarks
