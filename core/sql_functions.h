// SPDX-License-Identifier: GPL-3.0-or-later
// The functions that SQL carried by rule files and reports may call, registered
// on every connection the program opens: Val, Format, Left, InStr, DateDiff,
// CDate, Now, Year, IsNull. They call the helpers of text.h, so SQL and C++
// agree on numbers and dates.
#pragma once

struct sqlite3;

namespace lw::core {

void RegisterSqlFunctions(sqlite3* db);

}  // namespace lw::core
