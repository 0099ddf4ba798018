// The -oidfile reader: names of OBJECT IDENTIFIERs from a text file, added
// to (or replacing) the built-in ones.
//
// Two kinds of line, which may be mixed:
//   1.2.840.113549.1.1.11  sha256WithRSAEncryption
//     the dotted OID (see dotted_oid.h), blanks, then the name: the rest of
//     the line with the blanks around it taken off; it may hold blanks.
//   OID = 06 09 2A 86 48 86 F7 0D 01 01 0B
//   Comment = ...
//   Description = sha256WithRSAEncryption (1 2 840 113549 1 1 11)
//     the block format of OID configuration files: the OID as the
//     hexadecimal octets of its whole TLV (tag 06, a definite length, the
//     contents), then fields up to the next OID line or dotted line. Description gives the
//     name, without a trailing group of arcs in parentheses; Comment and
//     Warning are accepted and ignored.
// A line whose first non-blank character is "#" is a comment; blank lines
// are skipped; a carriage return before the line feed is ignored. Names hold
// no control characters. When an OID is named twice, the later name counts.
#pragma once

#include <string>
#include <string_view>

#include "oids/oid_names.h"

// The exit status of a run whose -oidfile cannot be read or holds a
// malformed line.
constexpr int kOidFileStatus = 81;

struct OidFileError {
    std::string path;
    int line = 0;  // 1 for the first line; 0 when the file as a whole fails
    std::string message;

    // "path:line: message", or "path: message" for the file as a whole.
    std::string text() const;
};

// Adds the names of the file at `path` to `names`: all of them, or none and
// kOidFileStatus with `error` filled in. 0 on success.
int loadOidFile(const char* path, OidNames& names, OidFileError& error);

// The same for a file's text already in memory; `path` names it in errors.
int loadOidText(std::string_view text, std::string_view path, OidNames& names, OidFileError& error);
