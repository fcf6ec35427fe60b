// SPDX-License-Identifier: GPL-3.0-or-later
// Reading the demo marketplace's pages the way a browser shows them, for
// suites that compare what the program stored or printed with what the site
// sent: the record rows between a list's markers, cell by cell, with the
// site's escapes undone. It is a plain walk over the text, independent of
// the program's scanner, so that the two can check each other.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace lw::test {

using Row = std::map<std::string, std::string>;
using Rows = std::vector<Row>;

// The five characters the site escapes, back to themselves; "&amp;" last so
// that an escaped entity stays an entity.
inline std::string Decoded(std::string text) {
    const std::pair<const char*, const char*> entities[] = {
        {"&#34;", "\""}, {"&#39;", "'"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}};
    for (const auto& [entity, plain] : entities) {
        std::string out;
        size_t from = 0;
        for (size_t at = text.find(entity); at != std::string::npos; at = text.find(entity, from)) {
            out.append(text, from, at - from).append(plain);
            from = at + std::strlen(entity);
        }
        text = out.append(text, from, std::string::npos);
    }
    return text;
}

inline std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \r\n\t");
    const size_t last = text.find_last_not_of(" \r\n\t");
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

// The record rows between two markers: one map of cell class to the text
// behind the cell's tags, decoded. A plain walk, so that a row of a megabyte
// costs no more than its length.
inline Rows ParseRows(const std::string& page, const std::string& begin, const std::string& end) {
    Rows rows;
    const size_t from = page.find(begin);
    if (from == std::string::npos) {
        return rows;
    }
    const size_t to = std::min(page.find(end, from), page.size());
    for (size_t row = page.find("<tr>", from); row < to; row = page.find("<tr>", row + 4)) {
        const size_t rowEnd = std::min(page.find("</tr>", row), to);
        Row values;
        const std::string cellStart = "<td class=\"";
        for (size_t cell = page.find(cellStart, row); cell < rowEnd;
             cell = page.find(cellStart, cell + 1)) {
            const size_t nameStart = cell + cellStart.size();
            const size_t nameEnd = page.find('"', nameStart);
            size_t text = page.find('>', nameEnd) + 1;
            while (text < rowEnd && page[text] == '<') {
                text = page.find('>', text) + 1;
            }
            const size_t textEnd = page.find('<', text);
            values[page.substr(nameStart, nameEnd - nameStart)] =
                Decoded(page.substr(text, textEnd - text));
        }
        rows.push_back(values);
    }
    return rows;
}

}  // namespace lw::test
