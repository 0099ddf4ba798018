// -help: the options of the listing, then those of the extensions in the
// same columns.
#include <cstring>

#include "app/options.h"
#include "runtime/output.h"

namespace {

const char kHelpText[] =
    "Options: (.D. indicates default)\n\n"
    "  -binary <infile>     .D.   print BER encoding from binary file\n"
    "  -text   <infile>     ...   print BER encoding from text file\n"
    "  +offset,num          ...   print \"num\" bytes starting at \"offset\" in\n"
    "                             input file\n"
    "  -decomposed          ...   print BER encoding in decomposed-TLV format\n"
    "  -hexadecimal         .D.   print BER encoding in hexadecimal-TLV format\n"
    "  -syntax              ...   print BER encoding in syntax-TLV format\n"
    "  -output <outfile>    ...   write output into file\n"
    "  -noaddition          ...   do not print additional clarifying value in hex\n"
    "                             for INTEGER and REAL types when printing in\n"
    "                             decomposed-TLV or syntax-TLV formats\n"
    "  -noshort             ...   do not truncate contents of BER encoding\n"
    "  -notitles            ...   do not print titles for type, length, contents\n"
    "                             fields when printing in syntax-TLV format\n"
    "  -pad <byte>          ...   skip padding areas between concatenated records\n"
    "                             filled with <byte>s, <byte> represents a hex\n"
    "                             number (e.g., 0x00 for hex 00, 0xFF for hex FF)\n"
    "                             or a non-negative decimal number from 0 to 255\n"
    "                             (e.g. 10 or 128)\n"
    "  -nocdrheaders        ...   do not automatically detect and skip CDR headers\n"
    "  -help                ...   print help information\n";

struct ExtensionHelp {
    const char* name;  // with its argument
    const char* text;  // wrapped at kHelpWidth by printHelp
};

// One row an extension option, in the order the options are looked up.
constexpr ExtensionHelp kExtensionHelp[] = {
    {"--help", "print help information, as -help"},
    {"--version", "print the version number alone"},
    {"-pem <infile>", "print BER encoding from each PEM block of a text file, behind a line with the block's "
                      "number and label"},
    {"-base64 <infile>", "print BER encoding from a base64 or base64url text file"},
    {"-json", "print BER encoding as JSON Lines: one object per record, each element with its offset, "
              "lengths, tag, name and value; nothing else on standard output"},
    {"-oids", "name OBJECT IDENTIFIERs behind their arcs when printing in decomposed-TLV, syntax-TLV or JSON "
              "formats"},
    {"-oidfile <file>", "name OBJECT IDENTIFIERs with the names of a file of \"dotted-oid name\" lines (or OID = "
                        "and Description = blocks) as well; implies -oids"},
    {"-dig", "print the contents of OCTET STRING and BIT STRING values that hold BER encodings as the elements they "
             "hold, one level deeper"},
    {"-utf8", "print UTF8String, BMPString and UniversalString values as UTF-8 text; control characters and "
              "invalid sequences stay escaped"},
    {"-diagnose", "after a value that fails to decode print why, and go on behind it; show the octets of time "
                  "values that were normalised; end with a summary; exit status 83 when anything was found"},
    {"-check", "print no listing, only the summary of -diagnose, with its exit status"},
    {"-tags <file|name>", "show field names and readable values from a tag map in the syntax-TLV, "
                          "decomposed-TLV or JSON formats: a map file, or 3gpp-ps for the bundled 3GPP packet-switched "
                          "CDRs"},
    {"-threads <n>", "list on n threads (1 to 256; default: one per online CPU); the listing is the same for "
                     "every n. Standard error shows a progress line for long runs when it is a terminal and the "
                     "listing goes elsewhere"},
    {"-records <n>[-<m>]", "list only records n to m (n alone: that record; n-: from n on), numbered as the "
                           "listing announces them; exit status 85 when the input ends first"},
};

constexpr size_t kNameColumn = 2;   // where the name begins
constexpr size_t kMarkColumn = 23;  // where "..." begins
constexpr size_t kTextColumn = 29;  // where the text and its continuation lines begin
constexpr size_t kHelpWidth = 77;   // the longest line of the help text

// The text of a row from column kTextColumn, words wrapped at kHelpWidth.
void printWrapped(RunContext* context, const char* text)
{
    size_t column = kTextColumn;
    bool lineStart = true;
    while (*text != '\0') {
        const size_t word = std::strcspn(text, " ");
        if (!lineStart && column + 1 + word > kHelpWidth) {
            qorWrite(context, "\n", 1);
            qorBlanks(context, static_cast<int>(kTextColumn));
            column = kTextColumn;
            lineStart = true;
        }
        if (!lineStart) {
            qorWrite(context, " ", 1);
            ++column;
        }
        qorWrite(context, text, word);
        column += word;
        lineStart = false;
        text += word;
        while (*text == ' ') ++text;
    }
    qorWrite(context, "\n", 1);
}

}  // namespace

void printHelp(RunContext* context)
{
    qorPrint(context, "%s", kHelpText);
    qorPrint(context, "\nExtensions:\n\n");
    for (const ExtensionHelp& row : kExtensionHelp) {
        const size_t nameLength = std::strlen(row.name);
        qorBlanks(context, static_cast<int>(kNameColumn));
        qorWrite(context, row.name, nameLength);
        const size_t end = kNameColumn + nameLength;
        qorBlanks(context, static_cast<int>(end < kMarkColumn ? kMarkColumn - end : 1));
        qorWrite(context, "...   ", 6);
        printWrapped(context, row.text);
    }
}
