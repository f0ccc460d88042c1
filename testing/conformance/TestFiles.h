#pragma once

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// The suite lies in a static library, from which a linker takes only what is referred to. Each
/// file of tests has a function here, and whoever makes a parameter for the suite refers to all.
void linkTestFiles();

void linkOutcomeTests();
void linkExhaustionTests();
void linkFailureTests();
void linkUpdateTests();
void linkDeletionTests();
void linkLibraryTests();

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
