#pragma once

#include <QtGlobal>

namespace kx {

/// Folds \a v into the running hash \a h with the splitmix finaliser: every
/// input bit moves about half the output bits, so fingerprints built by
/// folding field after field tell apart values that differ in one bit.
inline quint64 hashMix(quint64 h, quint64 v)
{
    h ^= v + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
    h ^= h >> 30;
    h *= 0xbf58476d1ce4e5b9ULL;
    h ^= h >> 27;
    h *= 0x94d049bb133111ebULL;
    h ^= h >> 31;
    return h;
}

} // namespace kx
