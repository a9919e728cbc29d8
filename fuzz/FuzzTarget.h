#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The fuzz targets: each takes one input of any bytes and must neither crash, hang, leak
/// nor trip a sanitizer on it. The same entry points run under libFuzzer (one executable a
/// target, scripts/fuzz) and as ordinary tests that replay fuzz/corpus/<name>/.
namespace FuzzTarget {

using Entry = void (*)(const std::uint8_t* data, std::size_t size);

struct Target {
    const char* name;
    Entry entry;
};

/// Every target linked into this program, in no particular order.
std::vector<Target>& targets();
bool add(const char* name, Entry entry);

} // namespace FuzzTarget

/// Defines a target named `name` (its corpus is fuzz/corpus/name/); the body follows, with
/// `data` and `size` in scope.
#define TESSARAN_FUZZ_TARGET(name)                                                                 \
    static void fuzz_##name(const std::uint8_t* data, std::size_t size);                           \
    [[maybe_unused]] static const bool fuzz_registered_##name =                                    \
        FuzzTarget::add(#name, fuzz_##name);                                                       \
    static void fuzz_##name(const std::uint8_t* data, std::size_t size)
