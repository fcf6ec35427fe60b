// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's listing categories: one fixed directory, the source
// of both the item pages ("Meta: Category") and the category.pro file that the
// rules ship. It never changes at run time.
#pragma once

#include <string>
#include <vector>

namespace lw::site {

struct Category {
    int number;
    const char* meta;
    const char* name;
};

const std::vector<Category>& Categories();
// nullptr for a number the site does not have.
const Category* FindCategory(int number);
// "Collectibles: Toys"
std::string CategoryFullName(const Category& category);
// The directory as category.pro holds it: "[Meta]" lines, then "Name=number",
// CR LF line ends, a blank line between groups.
std::string CategoryFileText();

}  // namespace lw::site
