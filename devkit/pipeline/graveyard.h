#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace devkit::pipeline {

// The memory of COM objects that are gone. A filter that still calls one has released it once too often: the
// call then ends up here and is a breach, where it would crash or hit another object. The memory is given
// back when much more has come after it. Any thread may call.

[[nodiscard]] void* TakeObjectMemory(std::size_t size);
// Tells of an object that is about to be buried, by an address in its memory, what it is ("FixedPage
// /1.fpage"), and what is called with the text of each breach.
using TellBreach = std::function<void(std::string)>;
void NameTheDead(const void* pInside, std::string description, TellBreach tell) noexcept;
void BuryObjectMemory(void* pMemory, std::size_t size) noexcept;

}  // namespace devkit::pipeline
