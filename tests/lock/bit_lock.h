// The bit lock: a digest of every kernel's output bits on fixed inputs, kept
// in a committed file, so that a change of any kernel's arithmetic shows by
// name. Inputs are made by integer arithmetic and are exact in both element
// types, so the digests are the same on every platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tqftest {

// One locked call: a kernel with one argument setting (usually a flag).
struct LockCase {
    std::string key;      // "<exported name> <setting>[ @platform]", the row of the lock file
    size_t elem_size;     // bytes of one scalar (4 or 8)
    size_t in_count;      // scalars read
    size_t out_count;     // scalars written
    // Runs the call; returns the status.
    std::function<int(const void* src, void* dst)> run;
};

// The platform tag of rows whose bits depend on the platform: "x86-64" or "i386".
const char* lock_platform();

// Every locked case of the built library.
std::vector<LockCase> lock_cases();

// Element i of the fixed input, exact in float.
double lock_input(size_t i);

// FNV-1a over bytes, continued from `h`.
uint64_t fnv1a(const void* data, size_t bytes, uint64_t h = 0xcbf29ce484222325ull);

// Digest of one case: its outputs out of place, with src or dst moved off
// 16-byte alignment by one scalar, and in place (aligned and moved), each
// call on its own stretch of the fixed input. Empty when a call fails.
std::string digest_case(const LockCase& c, std::string* error);

}  // namespace tqftest
