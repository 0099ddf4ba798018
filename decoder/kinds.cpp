#include "decoder/kinds.h"

#include <array>

#include "decoder/control_table.h"
#include "decoder/errors.h"
#include "decoder/primitive.h"
#include "decoder/strings.h"
#include "decoder/times.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"

namespace {

// The code that 0056S carries for a kind no routine is known for.
constexpr int64_t kUnknownKindCode = 4;

// A kind that no table of this program should carry, or one whose routine
// isn't part of this build.
uint32_t unknownKind(DecodeCall& call, int32_t, int32_t&, bool)
{
    reportError(call.context, RT_CANNOT_HAPPEN, kUnknownKindCode);
}

// REAL goes through the entry that the table's init function linked, so a
// table without it fails with 0112S instead of calling nothing.
uint32_t realThroughEntry(DecodeCall& call, int32_t length, int32_t&, bool constructed)
{
    RealEntry entry = call.context->state->hooks.realEntry;
    if (entry == nullptr) reportError(call.context, RT_REAL_NOT_LINKED);
    return entry(call, length, constructed);
}

constexpr uint32_t kKindSlots = 0x50;  // above the highest kind, KIND_TIME_TEXT

// One slot per kind value, looked up by index.
constexpr std::array<KindRoutine, kKindSlots> kRoutines = [] {
    std::array<KindRoutine, kKindSlots> routines{};
    for (KindRoutine& routine : routines) routine = unknownKind;
    routines[KIND_BOOLEAN] = decodeSimple;
    routines[KIND_NULL] = decodeSimple;
    routines[KIND_INTEGER] = decodeSimple;
    routines[KIND_REAL] = realThroughEntry;
    routines[KIND_BIT_STRING] = decodeCounted;
    routines[KIND_OCTET_STRING] = decodeCounted;
    routines[KIND_COUNTED_TEXT] = decodeCounted;
    routines[KIND_BMP_TEXT] = decodeCounted;
    routines[KIND_UNIVERSAL_TEXT] = decodeCounted;
    routines[KIND_HUGE_INTEGER] = decodeCounted;
    routines[KIND_OBJECT_IDENTIFIER] = decodeCounted;
    routines[KIND_RELATIVE_OID] = decodeCounted;
    routines[KIND_TEXT] = decodeText;
    routines[KIND_TIME_TEXT] = decodeText;
    routines[KIND_UTC_TIME] = decodeTimeRecord;
    routines[KIND_GENERALIZED_TIME] = decodeTimeRecord;
    return routines;
}();

}  // namespace

KindRoutine kindRoutine(RunContext*, uint32_t kind)
{
    return kind < kKindSlots ? kRoutines[kind] : unknownKind;
}
