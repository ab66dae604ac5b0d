#pragma once
// Tests that draw many pictures draw smaller ones where every memory access is watched.

#if defined(__SANITIZE_THREAD__)
inline constexpr int kSlowed = 4; ///< what lengths of loops and numbers of strands are divided by
#else
inline constexpr int kSlowed = 1;
#endif
