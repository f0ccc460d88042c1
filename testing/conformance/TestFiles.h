#pragma once

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// Makes the linker include all files of tests. The suite is a static library, of which a linker
/// includes only the object files that are referenced. Each file of tests has a function here. The
/// constructor of the parameter references them all.
void linkTestFiles();

void linkOutcomeTests();
void linkExhaustionTests();
void linkFailureTests();
void linkUpdateTests();
void linkDeletionTests();
void linkLibraryTests();

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
