// Support: a number that readers and writers share. Its digits are part of what they compute, so they stand here once.
#pragma once

namespace tvmeta {

inline constexpr double Ln2 = 0.6931471805599453;

} // namespace tvmeta
