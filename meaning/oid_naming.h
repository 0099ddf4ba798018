// -oids and -oidfile: the names of OBJECT IDENTIFIERs behind their arcs.
#pragma once

#include <string_view>

struct RunContext;
struct Element;

// The name of the OBJECT IDENTIFIER `element` (universal 6, primitive, its
// contents whole and well-formed) in the run's table; empty when it has
// none, when the element is something else, or when -oids is not given.
// The view lives as long as the run's extensions.
std::string_view oidNameOf(const RunContext* context, const Element& element);

// Writes the name behind the value the layout has just written: " name" in
// the syntax layout, whose arcs stand in braces, " (name)" in the
// decomposed layout, whose arcs stand bare. The name is never cut: the
// width rule cuts the arcs as it does without -oids, and the name follows.
void printOidName(RunContext* context, const Element& element, bool syntaxLayout);
