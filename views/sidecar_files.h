// SPDX-License-Identifier: GPL-3.0-or-later
// The files that the auction poster leaves beside a new listing in the user's
// folder, named by item number: "<item>.pos" (shipping charged, shipping
// method) and "<item>.itc" (the item's cost). Once the sale's row exists they
// are read into it and deleted. This is the only piece of the lists that
// writes to the database; it never touches a row that already has a
// shipping method.
#pragma once

#include "core/store.h"

namespace lw::views {

// For each sale of the current user without a ShippingMethod: "<item>.pos"
// gives OrderShipping (line 1) and ShippingMethod (line 2), "<item>.itc" gives
// ItemCost (line 1); each file read is deleted. Returns the number of files
// taken in. Throws core::StoreError when the database fails.
int ImportSidecarFiles(core::Database& db);

}  // namespace lw::views
