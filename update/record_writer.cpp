// SPDX-License-Identifier: GPL-3.0-or-later
// The record writer. How the row is found: the built QueryString must be one
// statement, a SELECT that only reads; the first table named behind its
// first FROM (outside brackets) is the table written, and the same query with
// its result columns replaced by that table's rowid gives the rows, in the
// query's own order. So "SELECT * FROM Auctions WHERE ..." (any columns, any
// WHERE and ORDER BY, joins too) works as the rule files write it, and the
// row that the query finds first is the row written. A query over a view is
// refused: a view's rows have no rowid to write back to.
//
// Writing: the writes of a record are collected in their order and applied
// as one UPDATE (or INSERT) with bound values; when the table refuses that,
// they are applied again one field at a time so that only the refused field is
// lost. Fields the table lacks, and generated columns, are passed over.
#include "update/record_writer.h"

#include <sqlite3.h>

#include <algorithm>
#include <optional>

#include <QVariant>

#include "core/store.h"
#include "core/text.h"
#include "update/rules.h"

namespace lw::update {

using core::Database;
using core::StoreError;
using core::StoreText;

namespace {

const QString kCurrentTime = QStringLiteral("Current Time eBay");
const QString kEndDate = QStringLiteral("EndDate");
const QString kStartDate = QStringLiteral("StartDate");
const QString kPst = QStringLiteral(" PST");

// VB's Trim: blanks only, not tabs or line ends.
QString TrimBlanks(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text[first] == u' ') {
        ++first;
    }
    while (last > first && text[last - 1] == u' ') {
        --last;
    }
    return (first == 0 && last == text.size()) ? text : text.mid(first, last - first);
}

bool IsWordStart(QChar c) {
    return c.isLetter() || c == u'_';
}

bool IsWordChar(QChar c) {
    return c.isLetterOrNumber() || c == u'_' || c == u'$';
}

// "[12]" or "[A3]" with the brackets.
bool IsMacro(QStringView bracketed) {
    if (bracketed.size() < 3 || bracketed.front() != u'[' || bracketed.back() != u']') {
        return false;
    }
    QStringView inner = bracketed.mid(1, bracketed.size() - 2);
    if (inner.startsWith(u'A')) {
        inner = inner.mid(1);
    }
    if (inner.isEmpty()) {
        return false;
    }
    for (const QChar c : inner) {
        if (!c.isDigit()) {
            return false;
        }
    }
    return true;
}

bool HoldsMacro(QStringView text) {
    for (qsizetype open = text.indexOf(u'['); open >= 0; open = text.indexOf(u'[', open + 1)) {
        const qsizetype close = text.indexOf(u']', open);
        if (close < 0) {
            return false;
        }
        if (IsMacro(text.mid(open, close - open + 1))) {
            return true;
        }
    }
    return false;
}

// The end (exclusive) of a quoted run that starts at `open` with quote q,
// where a doubled quote stands for one; the text's end when unterminated.
qsizetype QuotedEnd(const QString& text, qsizetype open, QChar q, bool* closed = nullptr) {
    qsizetype j = open + 1;
    while (j < text.size()) {
        if (text[j] == q) {
            if (j + 1 < text.size() && text[j + 1] == q) {
                j += 2;
                continue;
            }
            if (closed != nullptr) {
                *closed = true;
            }
            return j + 1;
        }
        ++j;
    }
    if (closed != nullptr) {
        *closed = false;
    }
    return text.size();
}

qsizetype CommentEnd(const QString& text, qsizetype i) {
    if (text[i] == u'-') {
        const qsizetype eol = text.indexOf(u'\n', i);
        return eol < 0 ? text.size() : eol + 1;
    }
    const qsizetype close = text.indexOf(QStringLiteral("*/"), i + 2);
    return close < 0 ? text.size() : close + 2;
}

bool CommentAt(const QString& text, qsizetype i) {
    return i + 1 < text.size() &&
           ((text[i] == u'-' && text[i + 1] == u'-') || (text[i] == u'/' && text[i + 1] == u'*'));
}

// The query text with the Jet spellings made SQLite's, and for each character
// whether it stands inside a single-quoted literal.
struct Translated {
    QString text;
    std::vector<bool> literal;

    void Add(QStringView part, bool inLiteral) {
        text += part;
        literal.insert(literal.end(), static_cast<size_t>(part.size()), inLiteral);
    }
};

bool IsComparisonChar(QChar c) {
    return c == u'=' || c == u'<' || c == u'>' || c == u'!';
}

// Whether the text before `end` (blanks passed over) is a comparison
// operator; *operand is then the last character in front of the operator.
bool ComparisonBefore(const QString& text, qsizetype end, QChar* operand) {
    qsizetype i = end;
    while (i > 0 && text[i - 1].isSpace()) {
        --i;
    }
    const qsizetype opEnd = i;
    while (i > 0 && IsComparisonChar(text[i - 1])) {
        --i;
    }
    if (i == opEnd) {
        return false;
    }
    while (i > 0 && text[i - 1].isSpace()) {
        --i;
    }
    *operand = i > 0 ? text[i - 1] : QChar();
    return true;
}

bool ComparisonAfter(const QString& text, qsizetype start) {
    qsizetype i = start;
    while (i < text.size() && text[i].isSpace()) {
        ++i;
    }
    return i < text.size() && IsComparisonChar(text[i]);
}

// Jet's functions whose names SQLite reads as join words: they are called by
// their "$" names, which the store registers.
bool IsJoinWordFunction(QStringView word) {
    return word.compare(u"left", Qt::CaseInsensitive) == 0 ||
           word.compare(u"right", Qt::CaseInsensitive) == 0;
}

Translated TranslateJet(const QString& query) {
    Translated out;
    out.text.reserve(query.size());
    bool afterLike = false;
    qsizetype i = 0;
    while (i < query.size()) {
        const QChar c = query[i];
        bool closed = false;
        const qsizetype quoted = (c == u'\'' || c == u'"') ? QuotedEnd(query, i, c, &closed) : i;
        QString body;
        if (c == u'\'' || c == u'"') {
            body = query.mid(i + 1, quoted - i - (closed ? 2 : 1));
        }
        QChar operand;
        const bool compared = (c == u'\'' || c == u'"') && closed &&
                              (ComparisonBefore(out.text, out.text.size(), &operand) ||
                               ComparisonAfter(query, quoted));
        // A text compared with a function's value or a bracketed expression
        // ("DateDiff(...) < '0'") is a number there, as Jet compares it: the
        // cast gives it numeric affinity, which the other side then takes.
        if (compared && operand == u')' && !HoldsMacro(body) && core::IsPlainNumber(body)) {
            out.Add(u"CAST('", false);
            out.Add(body.trimmed(), true);
            out.Add(u"' AS NUMERIC)", false);
            i = quoted;
            afterLike = false;
        } else if (c == u'\'' || (c == u'"' && HoldsMacro(body))) {
            if (c == u'"') {
                // Jet reads a double-quoted text as a string: so is it here.
                body.replace(QStringLiteral("\"\""), QStringLiteral("\""));
                body.replace(u'\'', QStringLiteral("''"));
            }
            if (afterLike) {
                body.replace(u'*', u'%').replace(u'?', u'_');
            } else if (compared) {
                // Compared text ignores trailing blanks: '123 ' finds "123".
                body = StoreText(body);
            }
            out.Add(u"'", false);
            out.Add(body, true);
            if (closed) {
                out.Add(u"'", false);
            }
            i = quoted;
            afterLike = false;
        } else if (c == u'"' || c == u'`') {
            const qsizetype end = QuotedEnd(query, i, c);
            out.Add(QStringView(query).mid(i, end - i), false);
            i = end;
            afterLike = false;
        } else if (c == u'[') {
            const qsizetype close = query.indexOf(u']', i);
            const qsizetype end = close < 0 ? query.size() : close + 1;
            out.Add(QStringView(query).mid(i, end - i), false);
            i = end;
            afterLike = false;
        } else if (CommentAt(query, i)) {
            const qsizetype end = CommentEnd(query, i);
            out.Add(QStringView(query).mid(i, end - i), false);
            i = end;
        } else if (IsWordStart(c)) {
            qsizetype end = i + 1;
            while (end < query.size() && IsWordChar(query[end])) {
                ++end;
            }
            const QStringView word = QStringView(query).mid(i, end - i);
            qsizetype next = end;
            while (next < query.size() && query[next].isSpace()) {
                ++next;
            }
            out.Add(word, false);
            if (IsJoinWordFunction(word) && next < query.size() && query[next] == u'(') {
                out.Add(u"$", false);  // Left( is Left$(
            }
            afterLike = word.compare(u"like", Qt::CaseInsensitive) == 0;
            i = end;
        } else {
            out.Add(QStringView(query).mid(i, 1), false);
            if (!c.isSpace()) {
                afterLike = false;
            }
            ++i;
        }
    }
    return out;
}

// ------------------------------------------------------------------ tokens

struct Token {
    enum class Kind { Word, Literal, Name, Punct };
    Kind kind;
    qsizetype start;
    qsizetype end;
    int depth;  // parentheses open before it
};

std::vector<Token> Tokens(const QString& sql) {
    std::vector<Token> tokens;
    int depth = 0;
    qsizetype i = 0;
    while (i < sql.size()) {
        const QChar c = sql[i];
        if (c.isSpace()) {
            ++i;
        } else if (CommentAt(sql, i)) {
            i = CommentEnd(sql, i);
        } else if (c == u'\'') {
            const qsizetype end = QuotedEnd(sql, i, c);
            tokens.push_back({Token::Kind::Literal, i, end, depth});
            i = end;
        } else if (c == u'"' || c == u'`') {
            const qsizetype end = QuotedEnd(sql, i, c);
            tokens.push_back({Token::Kind::Name, i, end, depth});
            i = end;
        } else if (c == u'[') {
            const qsizetype close = sql.indexOf(u']', i);
            const qsizetype end = close < 0 ? sql.size() : close + 1;
            tokens.push_back({Token::Kind::Name, i, end, depth});
            i = end;
        } else if (IsWordStart(c)) {
            qsizetype end = i + 1;
            while (end < sql.size() && IsWordChar(sql[end])) {
                ++end;
            }
            tokens.push_back({Token::Kind::Word, i, end, depth});
            i = end;
        } else {
            if (c == u'(') {
                tokens.push_back({Token::Kind::Punct, i, i + 1, depth});
                ++depth;
            } else if (c == u')') {
                depth = depth > 0 ? depth - 1 : 0;
                tokens.push_back({Token::Kind::Punct, i, i + 1, depth});
            } else {
                tokens.push_back({Token::Kind::Punct, i, i + 1, depth});
            }
            ++i;
        }
    }
    return tokens;
}

QStringView TokenText(const QString& sql, const Token& token) {
    return QStringView(sql).mid(token.start, token.end - token.start);
}

bool IsWord(const QString& sql, const Token& token, const char16_t* word) {
    return token.kind == Token::Kind::Word &&
           TokenText(sql, token).compare(QStringView(word), Qt::CaseInsensitive) == 0;
}

// A quoted or bracketed name without its quotes.
QString Unquoted(QStringView name) {
    if (name.size() >= 2 && name.front() == u'[' && name.back() == u']') {
        return name.mid(1, name.size() - 2).toString();
    }
    if (name.size() >= 2 && (name.front() == u'"' || name.front() == u'`') &&
        name.back() == name.front()) {
        const QString quote(name.front());
        return name.mid(1, name.size() - 2).toString().replace(quote + quote, quote);
    }
    return name.toString();
}

// Words that end a table name where an alias could stand.
bool IsClauseWord(QStringView word) {
    static const char16_t* const kWords[] = {
        u"where",     u"order",   u"group", u"limit",  u"inner",  u"left",    u"right",
        u"full",      u"cross",   u"join",  u"on",     u"using",  u"union",   u"except",
        u"intersect", u"natural", u"outer", u"having", u"window", u"indexed", u"not"};
    for (const char16_t* w : kWords) {
        if (word.compare(QStringView(w), Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

QString Refusal(const QString& protocol, const QString& key, const QString& why) {
    return QStringLiteral("The ") + key + QStringLiteral(" of protocol \"") + protocol +
           QStringLiteral("\" was refused: ") + why;
}

QString SourceValue(const QString& source, const QStringList& items,
                    const QStringList& ancillaryItems) {
    const bool ancillary = source.startsWith(u'A');
    const QStringList& list = ancillary ? ancillaryItems : items;
    const double number = core::Val(ancillary ? QStringView(source).mid(1) : QStringView(source));
    if (!(number >= 1 && number <= static_cast<double>(list.size()))) {
        return QString();
    }
    return list[static_cast<qsizetype>(number) - 1];
}

}  // namespace

// ------------------------------------------------------------------ queries

namespace {

// Where each macro of a translated query goes, found in the query's own text
// only, in the order of the text: [i] for i up to itemCount, [Ai] for i up to
// ancillaryCount, each at its first occurrence.
struct Fill {
    qsizetype pos;
    qsizetype length;
    bool ancillary;
    qsizetype index;  // zero-based in its list
};

std::vector<Fill> MacroFills(const QString& text, qsizetype itemCount, qsizetype ancillaryCount) {
    std::vector<Fill> fills;
    const auto place = [&](const QString& macro, bool ancillary, qsizetype index) {
        const qsizetype pos = text.indexOf(macro);
        if (pos >= 0) {
            fills.push_back({pos, macro.size(), ancillary, index});
        }
    };
    for (qsizetype i = 0; i < itemCount; ++i) {
        place(QStringLiteral("[") + QString::number(i + 1) + QStringLiteral("]"), false, i);
    }
    for (qsizetype i = 0; i < ancillaryCount; ++i) {
        place(QStringLiteral("[A") + QString::number(i + 1) + QStringLiteral("]"), true, i);
    }
    std::sort(fills.begin(), fills.end(),
              [](const Fill& a, const Fill& b) { return a.pos < b.pos; });
    return fills;
}

// The value a macro stands for: item `index` of its list, trimmed of blanks.
// An empty value is the empty text, as the literal '' is: never Null.
QString MacroValue(bool ancillary, qsizetype index, const QStringList& items,
                   const QStringList& ancillaryItems) {
    QString value = TrimBlanks((ancillary ? ancillaryItems : items)[index]);
    return value.isNull() ? QStringLiteral("") : value;
}

}  // namespace

QString JetSql(const QString& query) {
    return TranslateJet(query).text;
}

QString BuildQuery(const QString& queryString, const QStringList& items,
                   const QStringList& ancillaryItems) {
    const Translated query = TranslateJet(queryString);
    QString built;
    qsizetype at = 0;
    for (const Fill& fill : MacroFills(query.text, items.size(), ancillaryItems.size())) {
        const QString doubled = MacroValue(fill.ancillary, fill.index, items, ancillaryItems)
                                    .replace(u'\'', QStringLiteral("''"));
        built += QStringView(query.text).mid(at, fill.pos - at);
        built += query.literal[static_cast<size_t>(fill.pos)]
                     ? doubled
                     : QString(QStringLiteral("'") + doubled + QStringLiteral("'"));
        at = fill.pos + fill.length;
    }
    built += QStringView(query.text).mid(at);
    return built;
}

ParameterQuery MakeParameterQuery(const QString& queryString, qsizetype itemCount,
                                  qsizetype ancillaryCount) {
    const Translated query = TranslateJet(queryString);
    const std::vector<Fill> fills = MacroFills(query.text, itemCount, ancillaryCount);
    const auto inLiteral = [&query](qsizetype i) {
        return i >= 0 && i < query.text.size() && query.literal[static_cast<size_t>(i)];
    };
    // A literal that holds a macro becomes a concatenation in brackets:
    // 'a[1]b' is ('a' || ? || 'b'). These are its quotes.
    QSet<qsizetype> opens;
    QSet<qsizetype> closes;
    for (const Fill& fill : fills) {
        if (inLiteral(fill.pos)) {
            qsizetype first = fill.pos;
            while (inLiteral(first - 1)) {
                --first;
            }
            qsizetype last = fill.pos;
            while (inLiteral(last)) {
                ++last;
            }
            opens.insert(first - 1);
            closes.insert(last);
        }
    }
    ParameterQuery out;
    size_t next = 0;
    for (qsizetype i = 0; i < query.text.size();) {
        if (next < fills.size() && fills[next].pos == i) {
            const Fill& fill = fills[next++];
            out.sql += inLiteral(i) ? QStringLiteral("' || ? || '") : QStringLiteral("?");
            out.sources.emplace_back(fill.ancillary, fill.index);
            i += fill.length;
            continue;
        }
        if (opens.contains(i)) {
            out.sql += u'(';
        }
        out.sql += query.text[i];
        if (closes.contains(i)) {
            out.sql += u')';
        }
        ++i;
    }
    return out;
}

QString BuildQuery(const ProtocolRecord& protocol, const ScanLists& lists) {
    return BuildQuery(protocol.queryString, lists.items, lists.ancillaryItems);
}

QString BuildAncillaryQuery(const QString& query, const ScanLists& lists) {
    return BuildQuery(query, lists.items, lists.ancillaryItems);
}

// ------------------------------------------------------------------ dates

namespace {

// A day already written as "mm/dd/yy", as the site's pages write every day,
// is what Format(text, "mm/dd/yy") makes of it: it is given back as it
// stands, without being read as a date and written again. Anything else
// (another form, an impossible day) goes through Format.
QString UsShortDay(const QString& text) {
    return text.size() == 8 && core::LeftDate(text)
               ? text
               : core::Format(text, QStringLiteral("mm/dd/yy"));
}

}  // namespace

QString MainEndDate(const QString& value) {
    QString text = TrimBlanks(value);
    if (text.endsWith(QStringLiteral("PST")) || text.endsWith(QStringLiteral("PDT"))) {
        text = TrimBlanks(text.left(std::max<qsizetype>(text.size() - 4, 0)));
    }
    const qsizetype blank = text.indexOf(u' ');
    if (blank >= 0) {
        const QString time = TrimBlanks(text.mid(blank + 1));
        return UsShortDay(text.left(blank)) + QStringLiteral(", ") + time + kPst;
    }
    return core::Format(text, QStringLiteral("mm/dd/yy, hh:mm:ss")) + kPst;
}

QString MainStartDate(const QString& value) {
    return UsShortDay(TrimBlanks(value));
}

QString AncillaryEndDate(const QString& value) {
    const QString cut = value.left(std::max<qsizetype>(value.size() - 4, 0));
    return core::Format(TrimBlanks(cut), QStringLiteral("mm/dd/yy, hh:mm:ss")) + kPst;
}

QString AncillaryStartDate(const QString& value) {
    QString text = TrimBlanks(value);
    const qsizetype blank = text.indexOf(u' ', 1);
    if (blank >= 1) {
        text = TrimBlanks(text.left(blank));
    }
    return UsShortDay(text);
}

// ------------------------------------------------------------------ writer

RecordWriter::RecordWriter(Database& db, QString userName)
    : m_db(db), m_userName(std::move(userName)) {}

bool RecordWriter::FirstErrorOf(const QString& protocolName) {
    if (m_told.contains(protocolName)) {
        return false;
    }
    m_told.insert(protocolName);
    return true;
}

RecordWriter::Target RecordWriter::Analyse(const QString& sql, const QString& protocolName,
                                           const QString& key) {
    const QString single = QStringLiteral("only one SELECT statement may choose the row to write.");
    const std::vector<Token> tokens = Tokens(sql);
    if (tokens.empty() || !IsWord(sql, tokens.front(), u"select")) {
        throw QueryError(Refusal(protocolName, key, single));
    }
    QString shape;
    for (const Token& token : tokens) {
        shape += token.kind == Token::Kind::Literal ? QStringView(u"''") : TokenText(sql, token);
        shape += u' ';
    }
    if (!m_checkedShapes.contains(shape)) {
        try {
            const core::Statement check = m_db.PrepareSingle(sql);
            if (!check.IsReadOnly()) {
                throw QueryError(Refusal(protocolName, key, single));
            }
        } catch (const StoreError& e) {
            if (e.Code() == SQLITE_MISUSE) {
                throw QueryError(Refusal(protocolName, key, single));
            }
            throw;
        }
        m_checkedShapes.insert(shape);
    }

    // The first FROM outside brackets, and the table behind it.
    size_t from = 0;
    while (from < tokens.size() &&
           !(tokens[from].depth == 0 && IsWord(sql, tokens[from], u"from"))) {
        ++from;
    }
    size_t name = from + 1;
    if (name >= tokens.size() ||
        (tokens[name].kind != Token::Kind::Word && tokens[name].kind != Token::Kind::Name)) {
        throw QueryError(
            Refusal(protocolName, key, QStringLiteral("it must read its rows from a table.")));
    }
    // schema.table
    if (name + 2 < tokens.size() && TokenText(sql, tokens[name + 1]) == u"." &&
        (tokens[name + 2].kind == Token::Kind::Word ||
         tokens[name + 2].kind == Token::Kind::Name)) {
        name += 2;
    }
    const QString table = Unquoted(TokenText(sql, tokens[name]));
    QString qualifier = QStringView(sql)
                            .mid(tokens[from + 1].start, tokens[name].end - tokens[from + 1].start)
                            .toString();
    size_t alias = name + 1;
    if (alias < tokens.size() && IsWord(sql, tokens[alias], u"as")) {
        ++alias;
    }
    if (alias < tokens.size() && ((tokens[alias].kind == Token::Kind::Word &&
                                   !IsClauseWord(TokenText(sql, tokens[alias]))) ||
                                  tokens[alias].kind == Token::Kind::Name)) {
        qualifier = TokenText(sql, tokens[alias]).toString();
    }

    // The schema does not change during an update.
    auto known = m_tableTypes.constFind(table.toLower());
    if (known == m_tableTypes.constEnd()) {
        QString found;
        core::Statement schema = m_db.Prepare(QStringLiteral(
            "SELECT type FROM sqlite_schema WHERE name = ? COLLATE NOCASE AND type IN "
            "('table', 'view') ORDER BY type = 'table' DESC LIMIT 1"));
        schema.Bind(1, table);
        if (schema.Step()) {
            found = schema.Text(0);
        }
        known = m_tableTypes.insert(table.toLower(), found);
    }
    if (*known != u"table") {
        throw QueryError(Refusal(protocolName, key,
                                 QStringLiteral("it reads \"") + table +
                                     QStringLiteral("\", which is not a table of the database.")));
    }
    return {table, QStringLiteral("SELECT ") + qualifier + QStringLiteral(".rowid ") +
                       QStringView(sql).mid(tokens[from].start)};
}

namespace {

QueryError OpenFailure(const QString& protocolName, const QString& key, const StoreError& e) {
    return QueryError(QStringLiteral("The ") + key + QStringLiteral(" of protocol \"") +
                      protocolName + QStringLiteral("\" could not be opened: ") + e.Message());
}

std::vector<qint64> Rowids(core::Statement& rows, int limit) {
    std::vector<qint64> rowids;
    while (rows.Step()) {
        rowids.push_back(rows.Value(0).toLongLong());
        if (limit > 0 && static_cast<int>(rowids.size()) >= limit) {
            break;
        }
    }
    return rowids;
}

}  // namespace

RecordWriter::FoundRows RecordWriter::Find(const QString& sql, const QString& protocolName,
                                           const QString& key, int limit) {
    try {
        const Target target = Analyse(sql, protocolName, key);
        core::Statement rows = m_db.PrepareSingle(target.rowSql);
        return {target.table, Rowids(rows, limit)};
    } catch (const StoreError& e) {
        throw OpenFailure(protocolName, key, e);
    }
}

RecordWriter::Plan& RecordWriter::PlanFor(const QString& query, const ScanLists& lists,
                                          const QString& protocolName, const QString& key) {
    const QString id = QString::number(lists.items.size()) + u' ' +
                       QString::number(lists.ancillaryItems.size()) + u' ' + query;
    auto it = m_plans.find(id);
    if (it != m_plans.end()) {
        return it->second;
    }
    Plan plan;
    plan.query = MakeParameterQuery(query, lists.items.size(), lists.ancillaryItems.size());
    try {
        const Target target = Analyse(plan.query.sql, protocolName, key);
        plan.table = target.table;
        plan.rows = std::make_unique<core::Statement>(m_db.PrepareSingle(target.rowSql));
    } catch (const StoreError&) {
        // A macro where SQLite takes no parameter (a name written as a
        // literal): the values go into the text.
        plan.literal = true;
    }
    return m_plans.emplace(id, std::move(plan)).first->second;
}

RecordWriter::FoundRows RecordWriter::FindFor(const QString& query, const ScanLists& lists,
                                              const QString& protocolName, const QString& key,
                                              int limit) {
    Plan& plan = PlanFor(query, lists, protocolName, key);
    if (plan.literal) {
        return Find(BuildQuery(query, lists.items, lists.ancillaryItems), protocolName, key, limit);
    }
    core::Statement& rows = *plan.rows;
    try {
        rows.Reset();
        int index = 1;
        for (const auto& [ancillary, at] : plan.query.sources) {
            rows.Bind(index++, MacroValue(ancillary, at, lists.items, lists.ancillaryItems));
        }
        FoundRows found{plan.table, Rowids(rows, limit)};
        rows.Reset();
        return found;
    } catch (const StoreError& e) {
        rows.Reset();
        throw OpenFailure(protocolName, key, e);
    }
}

RecordWriter::TableColumns& RecordWriter::ColumnsOf(const QString& table) {
    auto it = m_tables.find(table);
    if (it != m_tables.end()) {
        return *it;
    }
    TableColumns columns;
    columns.table = table;
    core::Statement info =
        m_db.Prepare(QStringLiteral("SELECT name, hidden, type FROM pragma_table_xinfo(?)"));
    info.Bind(1, table);
    while (info.Step()) {
        // hidden: 0 a plain column, 1 hidden (virtual tables), 2 and 3 generated.
        if (info.Value(1).toInt() == 0) {
            const QString column = info.Text(0);
            columns.byLower.insert(column.toLower(), column);
            if (core::HasNumericAffinity(info.Text(2))) {
                columns.numeric.insert(column);
            }
        }
    }
    return *m_tables.insert(table, columns);
}

core::Statement& RecordWriter::Reused(const QString& sql) {
    return Reused(sql, [&sql] { return sql; });
}

template <typename MakeSql>
core::Statement& RecordWriter::Reused(const QString& key, const MakeSql& makeSql) {
    auto it = m_statements.find(key);
    if (it == m_statements.end()) {
        it = m_statements.emplace(key, std::make_unique<core::Statement>(m_db.Prepare(makeSql())))
                 .first;
    } else {
        it->second->Reset();
    }
    return *it->second;
}

namespace {

// The key of a statement over the columns of a write: the kind, the table
// and the columns, told apart by a character no name holds.
QString StatementKey(QChar kind, const QString& table, const std::vector<QString>& columns) {
    qsizetype length = table.size() + 2;
    for (const QString& column : columns) {
        length += column.size() + 1;
    }
    QString key;
    key.reserve(length);
    key += kind;
    key += table;
    for (const QString& column : columns) {
        key += u'\x1f';
        key += column;
    }
    return key;
}

// "a, b, c" of the quoted columns, each followed by suffix.
QString ColumnList(const std::vector<QString>& columns, const QString& suffix = {}) {
    QString out;
    for (size_t i = 0; i < columns.size(); ++i) {
        out += (i ? QStringLiteral(", ") : QString()) + core::QuoteIdentifier(columns[i]) + suffix;
    }
    return out;
}

}  // namespace

namespace {

// At most this many field lists are kept per table: a protocol writes the
// same fields record after record, so a table sees only a few.
constexpr size_t kMostShapes = 32;

bool SameFields(const std::vector<QString>& fields,
                const std::vector<std::pair<QString, QString>>& writes) {
    if (fields.size() != writes.size()) {
        return false;
    }
    for (size_t i = 0; i < fields.size(); ++i) {
        if (fields[i] != writes[i].first) {
            return false;
        }
    }
    return true;
}

}  // namespace

RecordWriter::Shape& RecordWriter::ShapeOf(TableColumns& columns, const Writes& writes) {
    for (const std::shared_ptr<Shape>& shape : columns.shapes) {
        if (SameFields(shape->fields, writes)) {
            return *shape;
        }
    }
    auto shape = std::make_shared<Shape>();
    for (const auto& write : writes) {
        const QString& field = write.first;
        shape->fields.push_back(field);
        auto it = columns.byField.constFind(field);
        if (it == columns.byField.constEnd()) {
            it = columns.byField.insert(field, columns.byLower.value(field.toLower()));
        }
        const QString& column = *it;
        int slot = -1;
        if (!column.isEmpty()) {
            const auto same = std::find(shape->columns.begin(), shape->columns.end(), column);
            slot = static_cast<int>(same - shape->columns.begin());
            if (same == shape->columns.end()) {
                shape->columns.push_back(column);
                shape->numeric.push_back(columns.numeric.contains(column));
            }
        }
        shape->slot.push_back(slot);
    }
    if (columns.shapes.size() >= kMostShapes) {
        columns.shapes.erase(columns.shapes.begin());
    }
    columns.shapes.push_back(shape);
    return *shape;
}

template <typename MakeSql>
core::Statement& RecordWriter::ShapeStatement(Shape& shape, const QString& table, char16_t kind,
                                              const std::vector<bool>& which,
                                              const MakeSql& makeSql) {
    auto key = std::make_pair(kind, which);
    const auto it = shape.statements.find(key);
    if (it != shape.statements.end()) {
        it->second->Reset();
        return *it->second;
    }
    std::vector<QString> named;
    for (size_t i = 0; i < which.size(); ++i) {
        if (which[i]) {
            named.push_back(shape.columns[i]);
        }
    }
    core::Statement& statement =
        Reused(StatementKey(QChar(kind), table, named), [&] { return makeSql(named); });
    shape.statements.emplace(std::move(key), &statement);
    return statement;
}

void RecordWriter::Apply(const QString& table, const std::vector<qint64>& found,
                         const Writes& writes) {
    TableColumns& columns = ColumnsOf(table);
    Shape& shape = ShapeOf(columns, writes);
    // The value of each column: the last write of it that the column takes; a
    // value a number column cannot take is lost.
    const auto take = [&shape](size_t write, const QString& given) -> std::optional<QString> {
        const int slot = shape.slot[write];
        if (slot < 0) {
            return std::nullopt;
        }
        return shape.numeric[static_cast<size_t>(slot)] ? core::NumberColumnText(given)
                                                        : std::optional<QString>(given);
    };
    const size_t count = shape.columns.size();
    std::vector<QString> values(count);
    std::vector<bool> known(count, false);
    bool any = false;
    for (size_t i = 0; i < writes.size(); ++i) {
        if (std::optional<QString> value = take(i, writes[i].second)) {
            const auto slot = static_cast<size_t>(shape.slot[i]);
            values[slot] = std::move(*value);
            known[slot] = true;
            any = true;
        }
    }
    const QString quotedTable = core::QuoteIdentifier(table);
    // Binds the values of the columns in which, from index on.
    const auto bind = [&values](core::Statement& statement, const std::vector<bool>& which,
                                int index = 1) {
        for (size_t i = 0; i < which.size(); ++i) {
            if (which[i]) {
                statement.Bind(index++, values[i]);
            }
        }
        return index;
    };

    qint64 rowid = found.empty() ? -1 : found.front();
    if (rowid < 0 && any) {
        try {
            core::Statement& insert = ShapeStatement(
                shape, table, u'I', known, [&](const std::vector<QString>& named) -> QString {
                    QString marks;
                    for (size_t i = 0; i < named.size(); ++i) {
                        marks += i ? QStringLiteral(", ?") : QStringLiteral("?");
                    }
                    return QStringLiteral("INSERT INTO ") + quotedTable + QStringLiteral(" (") +
                           ColumnList(named) + QStringLiteral(") VALUES (") + marks +
                           QStringLiteral(")");
                });
            bind(insert, known);
            insert.Run();
            return;
        } catch (const StoreError& e) {
            if (StoreCannotWrite(e.Code())) {
                throw;  // not a refused value: the database itself failed
            }
            // A refused value: the row is added, then filled field by field.
        }
    }
    if (rowid < 0) {
        Reused(QStringLiteral("INSERT INTO ") + quotedTable + QStringLiteral(" DEFAULT VALUES"))
            .Run();
        rowid = m_db.LastInsertId();
    }
    if (!any) {
        return;
    }
    if (!found.empty()) {
        // Only the fields whose stored value the write would change: an
        // update that writes a value as it stands still rewrites every index
        // over its column. "IS" compares as the column stores, so "5" is the
        // same as a stored 5 in a number column and not in a text one; byte
        // by byte, so a change of case is a change.
        std::vector<bool> changed = known;
        try {
            core::Statement& compare = ShapeStatement(
                shape, table, u'C', known, [&](const std::vector<QString>& named) -> QString {
                    return QStringLiteral("SELECT ") +
                           ColumnList(named, QStringLiteral(" IS ? COLLATE BINARY")) +
                           QStringLiteral(" FROM ") + quotedTable +
                           QStringLiteral(" WHERE rowid = ?");
                });
            compare.Bind(bind(compare, known), rowid);
            if (compare.Step()) {
                int result = 0;
                for (size_t i = 0; i < count; ++i) {
                    if (known[i] && compare.Value(result++).toLongLong() != 0) {
                        changed[i] = false;
                    }
                }
            }
            compare.Reset();
        } catch (const StoreError&) {
            changed = known;
        }
        if (std::find(changed.begin(), changed.end(), true) == changed.end()) {
            return;
        }
        try {
            core::Statement& update = ShapeStatement(
                shape, table, u'U', changed, [&](const std::vector<QString>& named) -> QString {
                    return QStringLiteral("UPDATE ") + quotedTable + QStringLiteral(" SET ") +
                           ColumnList(named, QStringLiteral(" = ?")) +
                           QStringLiteral(" WHERE rowid = ?");
                });
            update.Bind(bind(update, changed), rowid);
            update.Run();
            return;
        } catch (const StoreError&) {
            // Field by field below.
        }
    }
    for (size_t i = 0; i < writes.size(); ++i) {
        const std::optional<QString> value = take(i, writes[i].second);
        if (!value) {
            continue;
        }
        try {
            m_db.Prepare(QStringLiteral("UPDATE ") + quotedTable + QStringLiteral(" SET ") +
                         core::QuoteIdentifier(shape.columns[static_cast<size_t>(shape.slot[i])]) +
                         QStringLiteral(" = ? WHERE rowid = ?"))
                .Bind(1, *value)
                .Bind(2, rowid)
                .Run();
        } catch (const StoreError& e) {
            if (StoreCannotWrite(e.Code())) {
                throw;
            }
            // This field is lost; the others are written.
        }
    }
}

RecordWriter::Outcome RecordWriter::WriteMain(const ProtocolRecord& protocol, ScanLists& lists) {
    const FoundRows found =
        FindFor(protocol.queryString, lists, protocol.section, QStringLiteral("QueryString"), 1);

    if (protocol.section == kCurrentTime) {
        const QString first = lists.items.isEmpty() ? QString() : lists.items.front();
        if (core::SiteTimeDifference(first) == u"0") {
            return Outcome::LeavePage;
        }
    }

    Writes writes;
    for (qsizetype i = 0; i < lists.items.size(); ++i) {
        const QString& field = static_cast<size_t>(i) < protocol.items.size()
                                   ? protocol.items[static_cast<size_t>(i)].field
                                   : RuleError();
        if (field == RuleError()) {
            continue;
        }
        if (field == kEndDate) {
            lists.items[i] = MainEndDate(lists.items[i]);
        } else if (field == kStartDate) {
            lists.items[i] = MainStartDate(lists.items[i]);
        }
        writes.emplace_back(field, TrimBlanks(lists.items[i]));
    }
    for (qsizetype i = 0; i < lists.includes.size() && i < lists.includeValues.size(); ++i) {
        writes.emplace_back(lists.includes[i], lists.includeValues[i]);
    }
    writes.emplace_back(QStringLiteral("UserName"), m_userName);
    writes.emplace_back(QStringLiteral("AuctionSiteFlag"), protocol.siteNumber);
    for (const WriteRule& write : protocol.writes) {
        writes.emplace_back(write.field,
                            SourceValue(write.source, lists.items, lists.ancillaryItems));
    }
    Apply(found.table, found.rowids, writes);
    lists.ClearRecord();
    return Outcome::Written;
}

void RecordWriter::WriteAncillary(const ProtocolRecord& protocol, const ScanLists& lists) {
    const FoundRows found =
        FindFor(protocol.queryString, lists, protocol.section, QStringLiteral("QueryString"), 1);

    QStringList items = lists.ancillaryItems;
    Writes writes;
    for (qsizetype i = 0; i < items.size(); ++i) {
        const QString& field = static_cast<size_t>(i) < protocol.items.size()
                                   ? protocol.items[static_cast<size_t>(i)].field
                                   : RuleError();
        if (field == RuleError()) {
            continue;
        }
        if (field == kEndDate) {
            items[i] = AncillaryEndDate(items[i]);
        } else if (field == kStartDate) {
            items[i] = AncillaryStartDate(items[i]);
        }
        writes.emplace_back(field, TrimBlanks(items[i]));
    }
    for (const WriteRule& write : protocol.writes) {
        QString value = SourceValue(write.source, lists.items, items);
        if (write.field == kEndDate) {
            value = AncillaryEndDate(value);
        }
        writes.emplace_back(write.field, value);
    }
    writes.emplace_back(QStringLiteral("UserName"), m_userName);
    writes.emplace_back(QStringLiteral("AuctionSiteFlag"), protocol.siteNumber);
    Apply(found.table, found.rowids, writes);
}

void RecordWriter::DeleteFoundRows(const ProtocolRecord& protocol, const ScanLists& lists) {
    const QString key = QStringLiteral("DeleteQuery");
    // The rows deleted are the record's own: the query holds a macro, and
    // with every macro given a value that no record holds it finds nothing.
    // A query that chooses rows whatever the record says (no macro, "OR 1=1",
    // "<>") would empty the table page by page.
    const QString own = QStringLiteral("it must choose the rows by the record's own values.");
    if (MakeParameterQuery(protocol.deleteQuery, lists.items.size(), lists.ancillaryItems.size())
            .sources.empty()) {
        throw QueryError(Refusal(protocol.section, key, own));
    }
    const FoundRows found = FindFor(protocol.deleteQuery, lists, protocol.section, key, 0);
    if (found.rowids.empty()) {
        return;
    }
    ScanLists nobody;
    const QString noValue(2, QChar(0xFFFF));
    for (qsizetype i = 0; i < lists.items.size(); ++i) {
        nobody.items << noValue;
    }
    for (qsizetype i = 0; i < lists.ancillaryItems.size(); ++i) {
        nobody.ancillaryItems << noValue;
    }
    if (!FindFor(protocol.deleteQuery, nobody, protocol.section, key, 1).rowids.empty()) {
        throw QueryError(Refusal(protocol.section, key, own));
    }
    core::Statement remove =
        m_db.Prepare(QStringLiteral("DELETE FROM ") + core::QuoteIdentifier(found.table) +
                     QStringLiteral(" WHERE rowid = ?"));
    for (const qint64 rowid : found.rowids) {
        remove.Bind(1, rowid);
        remove.Run();
        remove.Reset();
    }
}

}  // namespace lw::update
