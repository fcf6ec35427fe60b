// SPDX-License-Identifier: GPL-3.0-or-later
// The program's one application id: the name of its desktop entry, its
// AppStream metadata and its icon, and what the window tells the desktop.
#pragma once

namespace lw::core {

inline constexpr char kApplicationId[] = "org.lotwright.Lotwright";

}  // namespace lw::core
