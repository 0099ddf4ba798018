#include "oids/oid_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "oids/dotted_oid.h"

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// "Description = name (2 5 4 3)": the arcs repeat the OID; the name is what
// comes before them.
std::string_view withoutArcGroup(std::string_view text)
{
    if (text.empty() || text.back() != ')') return text;
    const size_t open = text.rfind('(');
    if (open == std::string_view::npos) return text;
    const std::string_view inside = text.substr(open + 1, text.size() - open - 2);
    for (const char c : inside) {
        if (!(c >= '0' && c <= '9') && c != ' ' && c != '.') return text;
    }
    return trimmed(text.substr(0, open));
}

// The octets of "06 03 55 04 03": pairs of hexadecimal digits, blanks
// between the pairs.
bool readHexOctets(std::string_view text, std::vector<uint8_t>& octets)
{
    size_t at = 0;
    while (at < text.size()) {
        if (isBlank(text[at])) {
            ++at;
            continue;
        }
        if (at + 1 >= text.size()) return false;
        const int high = hexDigit(text[at]);
        const int low = hexDigit(text[at + 1]);
        if (high < 0 || low < 0) return false;
        octets.push_back(static_cast<uint8_t>(high << 4 | low));
        at += 2;
        if (at < text.size() && !isBlank(text[at])) return false;
    }
    return !octets.empty();
}

// One OID with its name, as the file gives it.
struct Entry {
    std::vector<uint8_t> encoded;
    std::string name;
};

class Parser {
public:
    explicit Parser(OidFileError& error) : error_(error) {}

    bool readLine(std::string_view line, int number);
    bool finish() { return closeBlock(); }
    std::vector<Entry>& entries() { return entries_; }

private:
    bool readDottedLine(std::string_view line);
    bool readField(std::string_view key, std::string_view value);
    bool readOidField(std::string_view value);
    bool readDescription(std::string_view value);
    bool closeBlock();
    bool checkName(std::string_view name);
    bool fail(int line, std::string message);

    OidFileError& error_;
    std::vector<Entry> entries_;
    int number_ = 0;
    int blockLine_ = 0;  // the line of the open block's OID; 0: no block open
    bool blockNamed_ = false;
};

bool Parser::fail(int line, std::string message)
{
    error_.line = line;
    error_.message = std::move(message);
    return false;
}

bool Parser::readLine(std::string_view line, int number)
{
    number_ = number;
    line = trimmed(line);
    if (line.empty() || line.front() == '#') return true;
    if (line.front() >= '0' && line.front() <= '9') return closeBlock() && readDottedLine(line);
    size_t keyEnd = 0;
    while (keyEnd < line.size() && isLetter(line[keyEnd])) ++keyEnd;
    const std::string_view key = line.substr(0, keyEnd);
    const std::string_view rest = trimmed(line.substr(keyEnd));
    if (key == "Warning" && rest.empty()) return true;
    if (keyEnd == 0 || rest.empty() || rest.front() != '=') {
        return fail(number_, "a line is \"dotted-oid name\" or a field \"OID = ...\", \"Description = ...\"");
    }
    return readField(key, trimmed(rest.substr(1)));
}

bool Parser::readDottedLine(std::string_view line)
{
    const size_t blank = line.find_first_of(" \t");
    const std::string_view dotted = line.substr(0, blank);
    Entry entry;
    const DottedOidFault fault = parseDottedOid(dotted, entry.encoded);
    if (fault != DottedOidFault::None) {
        return fail(number_, "malformed OBJECT IDENTIFIER \"" + std::string(dotted) + "\": " +
                                 std::string(dottedOidFaultText(fault)));
    }
    const std::string_view name = blank == std::string_view::npos ? std::string_view{} : trimmed(line.substr(blank));
    if (name.empty()) return fail(number_, "the OBJECT IDENTIFIER " + std::string(dotted) + " has no name after it");
    if (!checkName(name)) return false;
    entry.name = name;
    entries_.push_back(std::move(entry));
    return true;
}

bool Parser::readField(std::string_view key, std::string_view value)
{
    if (key == "OID") return closeBlock() && readOidField(value);
    if (key == "Description") return readDescription(value);
    if (key == "Comment" || key == "Warning") return true;
    return fail(number_, "unknown field \"" + std::string(key) + "\" (an OID block has OID, Comment, Description, Warning)");
}

bool Parser::readOidField(std::string_view value)
{
    std::vector<uint8_t> octets;
    if (!readHexOctets(value, octets)) {
        return fail(number_, "OID = wants the octets of the OBJECT IDENTIFIER in hexadecimal, two digits each");
    }
    if (octets[0] != 0x06) return fail(number_, "the octets of OID = start with the tag 06 of an OBJECT IDENTIFIER");
    // X.690 8.1.3: a short length, or a long one of one or two octets.
    size_t start = 2;
    size_t length = octets.size() > 1 ? octets[1] : 0;
    if (octets.size() > 1 && octets[1] > 0x80 && octets[1] <= 0x82) {
        const size_t count = octets[1] & 0x7F;
        start = 2 + count;
        length = 0;
        for (size_t i = 2; i < start && i < octets.size(); ++i) length = length << 8 | octets[i];
    } else if (octets.size() > 1 && octets[1] >= 0x80) {
        return fail(number_, "the length of OID = is not a definite length of up to two octets");
    }
    if (octets.size() < start || octets.size() - start != length) {
        return fail(number_, "the length of OID = doesn't match the octets that follow it");
    }
    Entry entry;
    entry.encoded.assign(octets.begin() + static_cast<std::ptrdiff_t>(start), octets.end());
    if (!isWellFormedOidContents(entry.encoded)) {
        return fail(number_, "the contents of OID = are not a well-formed OBJECT IDENTIFIER");
    }
    entries_.push_back(std::move(entry));
    blockLine_ = number_;
    blockNamed_ = false;
    return true;
}

bool Parser::readDescription(std::string_view value)
{
    if (blockLine_ == 0) return fail(number_, "Description = without an OID = line before it");
    if (blockNamed_) return fail(number_, "a second Description in the block of the OID on line " + std::to_string(blockLine_));
    const std::string_view name = withoutArcGroup(value);
    if (name.empty()) return fail(number_, "the Description is empty");
    if (!checkName(name)) return false;
    entries_.back().name = name;
    blockNamed_ = true;
    return true;
}

bool Parser::closeBlock()
{
    if (blockLine_ != 0 && !blockNamed_) return fail(blockLine_, "the block of this OID has no Description");
    blockLine_ = 0;
    return true;
}

bool Parser::checkName(std::string_view name)
{
    for (const char c : name) {
        const auto octet = static_cast<unsigned char>(c);
        if (octet < 0x20 || octet == 0x7F) return fail(number_, "the name holds a control character");
    }
    return true;
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

bool readWholeFile(const char* path, std::string& text, std::string& failure)
{
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path, "rb"));
    if (!file) {
        failure = std::strerror(errno);
        return false;
    }
    char block[65536];
    size_t count = 0;
    while ((count = std::fread(block, 1, sizeof block, file.get())) > 0) text.append(block, count);
    if (std::ferror(file.get())) {
        failure = std::strerror(errno);
        return false;
    }
    return true;
}

}  // namespace

std::string OidFileError::text() const
{
    if (line == 0) return path + ": " + message;
    return path + ":" + std::to_string(line) + ": " + message;
}

int loadOidText(std::string_view text, std::string_view path, OidNames& names, OidFileError& error)
{
    error = OidFileError{std::string(path), 0, {}};
    Parser parser(error);
    int number = 0;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!parser.readLine(line, ++number)) return kOidFileStatus;
    }
    if (!parser.finish()) return kOidFileStatus;
    for (Entry& entry : parser.entries()) names.add(entry.encoded, entry.name);
    return 0;
}

int loadOidFile(const char* path, OidNames& names, OidFileError& error)
{
    std::string text;
    std::string failure;
    if (!readWholeFile(path, text, failure)) {
        error = OidFileError{path, 0, "cannot be read: " + failure};
        return kOidFileStatus;
    }
    return loadOidText(text, path, names, error);
}
