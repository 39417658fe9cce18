#pragma once

#include "devkit/filterhost/worker.h"

namespace devkit::validate {

// What is done with a filter beside running it over a document once, by name; each tells of what is wrong as
// failures.
namespace probes {
inline constexpr const char* kClassObject = "class-object";
inline constexpr const char* kFactory = "factory";
inline constexpr const char* kIdentity = "identity";
inline constexpr const char* kNullInitialisation = "null-initialisation";
inline constexpr const char* kUninitialised = "uninitialised";
inline constexpr const char* kReloading = "reloading";
// Of a job: runs its document again and again.
inline constexpr const char* kManyJobs = "many-jobs";
// Of a job: its memory fails, as MemoryQuestion has it.
inline constexpr const char* kFailingMemory = "failing-memory";
}  // namespace probes

[[nodiscard]] const filterhost::Probes& AllProbes();

}  // namespace devkit::validate
