// Build step: turns the list of built-in OID names (oids/oids.txt) into the
// rows that oids/builtin_oids.cpp compiles: the contents octets of every OID
// in one array, and the rows sorted by those octets.
//
//   make_oid_table <list> <output>
//
// A list line is "dotted-oid name", the name one word of printable ASCII;
// "#" starts a comment line. A malformed line or an OID listed twice stops
// the build with the line's number.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "oids/builtin_oids.h"
#include "oids/dotted_oid.h"

namespace {

struct Row {
    std::string dotted;
    std::vector<uint8_t> octets;
    std::string name;
    int line;
};

std::string_view trimmed(std::string_view text)
{
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    return text;
}

bool isNameCharacter(char c)
{
    return c > ' ' && c < 0x7F && c != '"' && c != '\\';
}

bool fail(const char* list, int line, std::string_view message)
{
    std::fprintf(stderr, "%s:%d: %.*s\n", list, line, static_cast<int>(message.size()), message.data());
    return false;
}

bool readRow(const char* list, int number, std::string_view line, std::vector<Row>& rows)
{
    const size_t blank = line.find_first_of(" \t");
    if (blank == std::string_view::npos) return fail(list, number, "a line is \"dotted-oid name\"");
    Row row{std::string(line.substr(0, blank)), {}, std::string(trimmed(line.substr(blank))), number};
    const DottedOidFault fault = parseDottedOid(row.dotted, row.octets);
    if (fault != DottedOidFault::None) return fail(list, number, dottedOidFaultText(fault));
    if (row.octets.size() > 0xFF) return fail(list, number, "the OID passes 255 contents octets");
    if (!std::all_of(row.name.begin(), row.name.end(), isNameCharacter)) {
        return fail(list, number, "a name is one word of printable ASCII, without quotes or backslashes");
    }
    rows.push_back(std::move(row));
    return true;
}

bool readList(const char* list, std::vector<Row>& rows)
{
    std::ifstream in(list);
    if (!in) return fail(list, 0, "cannot be read");
    std::string text;
    bool good = true;
    for (int number = 1; std::getline(in, text); ++number) {
        const std::string_view line = trimmed(text);
        if (line.empty() || line.front() == '#') continue;
        good = readRow(list, number, line, rows) && good;
    }
    return good;
}

bool sortRows(const char* list, std::vector<Row>& rows)
{
    std::stable_sort(rows.begin(), rows.end(), [](const Row& left, const Row& right) {
        return compareOidOctets(left.octets, right.octets) < 0;
    });
    bool good = true;
    for (size_t i = 1; i < rows.size(); ++i) {
        if (rows[i - 1].octets == rows[i].octets) {
            good = fail(list, rows[i].line, rows[i].dotted + " is listed twice (also on line " +
                                                std::to_string(rows[i - 1].line) + ")");
        }
    }
    return good;
}

std::string tableText(const std::vector<Row>& rows)
{
    std::ostringstream out;
    out << "// Written by oids/generator/make_oid_table.cpp from oids/oids.txt; do not edit.\n\n";
    out << "constexpr uint8_t kBuiltinOctets[] = {\n";
    for (const Row& row : rows) {
        out << "   ";
        for (const uint8_t octet : row.octets) {
            static constexpr char kDigits[] = "0123456789ABCDEF";
            out << " 0x" << kDigits[octet >> 4] << kDigits[octet & 0xF] << ',';
        }
        out << "  // " << row.dotted << '\n';
    }
    out << "};\n\nconstexpr BuiltinRow kBuiltinRows[] = {\n";
    size_t offset = 0;
    for (const Row& row : rows) {
        out << "    {" << offset << ", " << row.octets.size() << ", \"" << row.name << "\"},\n";
        offset += row.octets.size();
    }
    out << "};\n";
    return out.str();
}

bool writeTable(const char* path, const std::string& text)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) return fail(path, 0, "cannot be written");
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_oid_table <list> <output>\n");
        return 2;
    }
    std::vector<Row> rows;
    if (!readList(argv[1], rows) || !sortRows(argv[1], rows)) return 1;
    size_t octets = 0;
    for (const Row& row : rows) octets += row.octets.size();
    if (octets > 0xFFFF) {
        fail(argv[1], 0, "the octets of all OIDs pass 65535");
        return 1;
    }
    return writeTable(argv[2], tableText(rows)) ? 0 : 1;
}
