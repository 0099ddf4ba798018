// The tag map (-tags) in the syntax and decomposed layouts: the map's node
// of each open level along the walk, the field name beside the tag and the
// value in the map's form in place of the layout's own contents.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output_line.h"
#include "tagmap/tag_walk.h"
#include "tagmap/value_forms.h"
#include "tlv/element.h"
#include "tlv/syntax_layout.h"

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

// A primitive, tagged element of a definite length with a form of its own;
// for such an element `hex` is what the layout shows, so it goes here too.
inline bool formInPlace(const TagNode& node, const Element& element, const UniversalTag* row, bool bad)
{
    return node.form != ValueForm::None && !bad && !element.constructed && row == nullptr && element.length > 0 &&
           !element.lengthOverruns();
}

// A constructed, tagged element of a definite length that the data holds:
// the layout's value for it is never shown and never fails, so it isn't
// made.
inline bool nothingToShow(const Element& element, const UniversalTag* row, bool bad)
{
    return element.constructed && row == nullptr && !bad && element.length >= 0 && !element.lengthOverruns();
}

// " (not bcd-timestamp)" is the longest note behind a value that doesn't
// fit its form.
constexpr size_t kNoteRoom = 32;
// The room putFieldValue takes for an element of formInPlace.
inline size_t fieldValueRoom(const Element& element)
{
    return valueTextBound(static_cast<size_t>(element.length)) + kNoteRoom + 3;
}
// How a value of `textSize` characters with a note of `noteSize` behind it
// is cut where the line ends, as the layouts cut their own values: the
// characters kept of the text and of the note, and where "..." goes. A cut
// keeps the note whole behind the "..." when the line has room for it,
// else the text and the note are cut as one, the "..." last.
struct NotedCut {
    size_t text;
    size_t note;
    bool cut;        // "..." is written
    bool noteWhole;  // ... in front of the note, which is kept whole
};
inline NotedCut notedCut(const RunContext* context, size_t textSize, size_t noteSize, int column)
{
    bool cut = false;
    const size_t shown = keptOfValue(context, textSize + noteSize, false, column, cut);
    if (!cut) return {textSize, noteSize, false, false};
    if (noteSize > 0 && shown >= noteSize) return {shown - noteSize, noteSize, true, true};
    const size_t text = shown < textSize ? shown : textSize;
    return {text, shown - text, true, false};
}
// A primitive element's contents, for an element whose length is definite
// and held by the data.
inline Octets heldOctets(const Element& element)
{
    return Octets(element.start() + element.header, static_cast<size_t>(element.length));
}
// The octets of a value that doesn't fit its form at `at`, in hexadecimal
// with " (not FORM)" behind them; see putFieldValue.
char* putHexWithNote(char* at, const RunContext* context, const TagNode& node, Octets octets, int column);
// Writes the value of an element of formInPlace at `at`, in the node's form,
// or its hexadecimal with " (not FORM)" behind it, cut at the end of the line
// as the layouts cut their own values (a cut keeps the note whole when the
// line has room for it); `column` is where it starts. Returns the end.
inline char* putFieldValue(char* at, const RunContext* context, const TagMap& map, const TagNode& node,
                           Octets octets, int column)
{
    char* const end = putFormText(map, node, octets, at);
    if (end == nullptr) return putHexWithNote(at, context, node, octets, column);
    const NotedCut kept = notedCut(context, static_cast<size_t>(end - at), 0, column);
    if (!kept.cut) return end;
    std::memcpy(at + kept.text, "...", 3);
    return at + kept.text + 3;
}

// What the syntax layout writes of a mapped element on the element's own
// line as it composes it: the field name alone (nothing to show), or the
// name and the value in the map's form when the value is short. No `node`:
// the contents take printSyntaxFieldContents.
struct FieldOnLine {
    const TagNode* node = nullptr;
    bool value = false;
    size_t room = 0;  // what the line needs for them
};
// The element is the one the walk entered last; `held`: its length is
// definite and the data holds its contents.
inline FieldOnLine syntaxFieldOnTheLine(const RunContext* context, const Element& element, const UniversalTag* row,
                                        bool held)
{
    const TagNode* node = context->tagWalk->entered();
    if (node == nullptr || row != nullptr || !held || digsIn(context->extensions)) return {};
    // The name (and ": ") goes on the line in one move of kFieldReach.
    const size_t nameRoom = node->field.size() + TagMap::kFieldReach;
    if (element.constructed) return {node, false, nameRoom};  // nothingToShow
    // formInPlace, with a value short enough for the line's own room.
    const size_t room = fieldValueRoom(element);
    if (node->form == ValueForm::None || element.length == 0 || room > OutputLine::kMadeMost) return {};
    return {node, true, nameRoom + room};
}
inline void putSyntaxFieldOnTheLine(OutputLine& line, const RunContext* context, const FieldOnLine& field,
                                    const Element& element, int column)
{
    const std::string_view name = field.node->field;
    // The map keeps ": " behind every name.
    if (!name.empty()) column += line.textOf32(name.data(), name.size() + (field.value ? 2 : 0));
    if (!field.value) return;
    line.made([&](char* out) {
        return putFieldValue(out, context, context->tagWalk->map(), *field.node, heldOctets(element), column);
    });
}
