#include "tagmap/map_parser.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "render/tag_name.h"
#include "tagmap/map_builder.h"
#include "tagmap/value_forms.h"

namespace {

struct ClassWord {
    std::string_view word;
    int tagClass;
};

constexpr ClassWord kClassWords[] = {
    {"UNIVERSAL", kClassUniversal},
    {"APPLICATION", kClassApplication},
    {"PRIVATE", kClassPrivate},
};

std::string quoted(std::string_view text)
{
    std::string out = "'";
    out += text;
    out += '\'';
    return out;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

std::vector<std::string_view> words(std::string_view line)
{
    std::vector<std::string_view> out;
    size_t at = 0;
    while (at < line.size()) {
        while (at < line.size() && isBlank(line[at])) ++at;
        size_t start = at;
        while (at < line.size() && !isBlank(line[at])) ++at;
        if (at > start) out.push_back(line.substr(start, at - start));
    }
    return out;
}

template <typename Number>
bool wholeNumber(std::string_view text, Number& value)
{
    if (text.empty() || text[0] == '+') return false;
    auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value);
    return status == std::errc() && end == text.data() + text.size();
}

// A universal tag by the name the listing prints, a blank written as `_`
// (OCTET_STRING), since blanks separate the words of a line.
bool universalByName(std::string_view word, PathStep& step)
{
    for (int32_t tag = 0; tag <= 36; ++tag) {
        const char* name = universalTagName(tag);
        if (name == nullptr || std::strlen(name) != word.size()) continue;
        bool same = true;
        for (size_t i = 0; i < word.size() && same; ++i) same = word[i] == (name[i] == ' ' ? '_' : name[i]);
        if (same) {
            step = PathStep{false, kClassUniversal, static_cast<uint32_t>(tag)};
            return true;
        }
    }
    return false;
}

// `*`, `[n]`, `[APPLICATION n]`, `[PRIVATE n]`, `[UNIVERSAL n]` or a
// universal listing name.
bool pathStep(std::string_view word, PathStep& step)
{
    if (word == "*") {
        step = PathStep{true, 0, 0};
        return true;
    }
    if (word.size() < 3 || word.front() != '[' || word.back() != ']') return universalByName(word, step);
    std::string_view inside = word.substr(1, word.size() - 2);
    step = PathStep{false, kClassContext, 0};
    for (const ClassWord& known : kClassWords) {
        if (inside.size() > known.word.size() + 1 && inside.substr(0, known.word.size()) == known.word &&
            isBlank(inside[known.word.size()])) {
            step.tagClass = known.tagClass;
            inside.remove_prefix(known.word.size());
            while (!inside.empty() && isBlank(inside[0])) inside.remove_prefix(1);
            break;
        }
    }
    return wholeNumber(inside, step.number) && step.number <= kLargestTagNumber;
}

// A path's words: the blank inside `[APPLICATION 3]` does not end the word.
// Returns the number of words the path took.
size_t joinPath(const std::vector<std::string_view>& all, std::string_view& path)
{
    size_t used = 1;
    const char* begin = all[0].data();
    const char* end = all[0].data() + all[0].size();
    int open = 0;
    for (;;) {
        open = 0;
        for (const char* c = begin; c < end; ++c) open += *c == '[' ? 1 : *c == ']' ? -1 : 0;
        if (open <= 0 || used == all.size()) break;
        end = all[used].data() + all[used].size();
        ++used;
    }
    path = std::string_view(begin, static_cast<size_t>(end - begin));
    return used;
}

bool parsePath(std::string_view path, std::vector<PathStep>& steps, int line, std::string& error)
{
    steps.clear();
    size_t start = 0;
    for (;;) {
        size_t slash = path.find('/', start);
        std::string_view word = path.substr(start, slash == std::string_view::npos ? path.npos : slash - start);
        PathStep step;
        if (!pathStep(word, step)) {
            error = atLine(line, word.empty() ? "empty step in path " + quoted(path)
                                              : "unknown tag " + quoted(word) + " in path " + quoted(path));
            return false;
        }
        steps.push_back(step);
        if (slash == std::string_view::npos) return true;
        start = slash + 1;
    }
}

// `n=name` items of an enumerated form or a value list.
bool valueNames(const std::vector<std::string_view>& items, size_t from, std::vector<EnumName>& names, int line,
                std::string& error)
{
    names.clear();
    for (size_t i = from; i < items.size(); ++i) {
        size_t equals = items[i].find('=');
        EnumName name{0, {}};
        if (equals == std::string_view::npos || equals + 1 == items[i].size() ||
            !wholeNumber(items[i].substr(0, equals), name.value)) {
            error = atLine(line, "expected value=name, not " + quoted(items[i]));
            return false;
        }
        name.name = items[i].substr(equals + 1);
        if (name.name.size() > kLongestValueName) {
            error = atLine(line, "value name longer than " + std::to_string(kLongestValueName) + " characters");
            return false;
        }
        names.push_back(name);
    }
    return true;
}

bool formByName(std::string_view word, ValueForm& form)
{
    for (int i = static_cast<int>(ValueForm::Hex); i <= static_cast<int>(ValueForm::PlmnId); ++i) {
        if (word == valueFormName(static_cast<ValueForm>(i))) {
            form = static_cast<ValueForm>(i);
            return true;
        }
    }
    return false;
}

class LineParser {
public:
    explicit LineParser(TagMap& map) : builder_(map) {}

    bool line(std::string_view text, int number, std::string& error);
    bool finish(std::string& error) { return builder_.finish(error); }

private:
    bool field(const std::vector<std::string_view>& all, int number, std::string& error);

    TagMapBuilder builder_;
    std::vector<PathStep> steps_;
    std::vector<EnumName> names_;
};

bool LineParser::line(std::string_view text, int number, std::string& error)
{
    size_t hash = text.find('#');
    if (hash != std::string_view::npos) text = text.substr(0, hash);
    const std::vector<std::string_view> all = words(text);
    if (all.empty()) return true;
    if (all[0] == "type") {
        if (all.size() != 2) {
            error = atLine(number, "'type' takes one name");
            return false;
        }
        return builder_.beginType(all[1], number, error);
    }
    if (all[0] == "end") {
        if (all.size() != 1) {
            error = atLine(number, "'end' takes nothing after it");
            return false;
        }
        return builder_.endType(number, error);
    }
    if (all[0] == "values") {
        if (all.size() < 3) {
            error = atLine(number, "'values' takes a name and value=name items");
            return false;
        }
        return valueNames(all, 2, names_, number, error) && builder_.addValues(all[1], names_, number, error);
    }
    return field(all, number, error);
}

// PATH FIELD [FORM [ITEMS...]], FORM being a value form or @Type.
bool LineParser::field(const std::vector<std::string_view>& all, int number, std::string& error)
{
    std::string_view path;
    size_t at = joinPath(all, path);
    if (!parsePath(path, steps_, number, error)) return false;
    if (at == all.size()) {
        error = atLine(number, "path " + quoted(path) + " has no field name");
        return false;
    }
    std::string_view fieldName = all[at++];
    ValueForm form = ValueForm::None;
    std::string_view typeName;
    std::string_view valuesList;
    names_.clear();
    if (at < all.size()) {
        std::string_view word = all[at++];
        if (word.size() > 1 && word[0] == '@') {
            typeName = word.substr(1);
        } else if (!formByName(word, form)) {
            error = atLine(number, "unknown value form " + quoted(word));
            return false;
        }
        if (form == ValueForm::Enumerated && at + 1 == all.size() && all[at].size() > 1 && all[at][0] == '@') {
            valuesList = all[at].substr(1);
        } else if (form == ValueForm::Enumerated) {
            if (!valueNames(all, at, names_, number, error)) return false;
        } else if (at < all.size()) {
            error = atLine(number, "unexpected " + quoted(all[at]) + " after " + quoted(word));
            return false;
        }
    }
    return builder_.addField(steps_, fieldName, form, typeName, names_, valuesList, number, error);
}

}  // namespace

bool parseTagMap(std::string_view text, std::string_view fileName, TagMap& map, std::string& error)
{
    LineParser parser(map);
    int number = 0;
    size_t start = 0;
    bool ok = true;
    while (ok && start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        ok = parser.line(text.substr(start, end - start), ++number, error);
        start = end + 1;
    }
    ok = ok && parser.finish(error);
    if (!ok) error = std::string(fileName) + ": " + error;
    return ok;
}

bool loadTagMapFile(const std::string& path, TagMap& map, std::string& error)
{
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    std::string text;
    char chunk[65536];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, file.get())) > 0) text.append(chunk, got);
    if (std::ferror(file.get())) {
        error = path + ": read error";
        return false;
    }
    auto kept = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(kept.get(), text.data(), text.size());
    kept[text.size()] = '\0';
    if (!parseTagMap(std::string_view(kept.get(), text.size()), path, map, error)) return false;
    map.keepText(std::move(kept));
    return true;
}
