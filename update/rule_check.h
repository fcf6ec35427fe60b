// SPDX-License-Identifier: GPL-3.0-or-later
// The check a rule file must pass before it takes the place of the one in use:
// it must read as a rule text (sections of key=value lines, not a web page or
// stray bytes), and site.pro and info.pro must hold what the program reads
// from them. A sign-in page of the network in between, a truncated download
// or the wrong file is refused with words that say what was wrong.
#pragma once

#include <QString>

namespace lw::update {

// What is wrong with `text` arriving as the rule file `name` (site.pro,
// info.pro or another file of the self-update, such as category.pro), in a
// sentence that starts with the file's name; empty when the file may be used.
// Every name is checked for the form of a rule text; site.pro and info.pro also
// for their sections, and site.pro for a section of each protocol its [Update]
// section runs.
QString RuleFileProblem(const QString& name, const QString& text);

}  // namespace lw::update
