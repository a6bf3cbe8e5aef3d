// The three packed layouts of a Hermitian spectrum (CCS, Pack, Perm): where
// each harmonic's real and imaginary part lives, by flat element offset.
// Both the forward kernels (stores) and the inverse kernels (loads) take
// their addresses from here, so a layout is defined once.
#pragma once

#include <string>
#include <vector>

namespace tqfrdft {

enum class Format { CCS, Pack, Perm };

Format format_named(const std::string& name);  // "ccs", "pack", "perm"
const char* format_stem(Format f);             // "CCS", "Pack", "Perm"

// Elements of the array: N + 2 (CCS, even N), N + 1 (CCS, odd N), else N.
int spectrum_length(Format f, int n);
// Slot of Re X[k], k = 0..n/2.
int real_slot(Format f, int n, int k);
// Slot of Im X[k], or -1 where the layout keeps no imaginary part (DC, and
// Nyquist at even n; CCS keeps those as stored zeros, see zero_slots).
int imag_slot(Format f, int n, int k);
// The slots that always hold +0.0: CCS slot 1 and, at even n, slot n + 1.
std::vector<int> zero_slots(Format f, int n);

}  // namespace tqfrdft
