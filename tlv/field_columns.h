// The tag map (-tags) in the syntax and decomposed layouts: the map's node
// of each open level along the walk, the field name beside the tag and the
// value in the map's form in place of the layout's own contents.
#pragma once

#include <optional>
#include <string_view>

#include "tagmap/tag_walk.h"

struct RunContext;
struct Element;
struct UniversalTag;

// Installs a TagWalk in context->tagWalk for one layout's walk when the run
// has a tag map; without one the context's pointer stays null and the
// layouts print as they always do.
class TagWalkScope {
public:
    explicit TagWalkScope(RunContext* context);
    ~TagWalkScope();
    TagWalkScope(const TagWalkScope&) = delete;
    TagWalkScope& operator=(const TagWalkScope&) = delete;

private:
    RunContext* context_;
    TagWalk* saved_;
    std::optional<TagWalk> walk_;
};

// The field name of the element last entered at `level`, or empty.
std::string_view tagField(const RunContext* context, int level);

// The contents column of the syntax layout for a walk with a tag map: the
// field name, then `: ` and the value in the map's form, or the layout's
// own value. `column` is where the column starts; returns `bad`, set when
// the value failed as the layout tells it.
bool printSyntaxFieldContents(RunContext* context, const Element& element, int level, const UniversalTag* row,
                              int column, bool bad);

// The same for the decomposed layout, whose field name stands beside the
// type name: `:` and the value.
bool printDecomposedFieldContents(RunContext* context, const Element& element, int level, const UniversalTag* row,
                                  int column, bool bad);
