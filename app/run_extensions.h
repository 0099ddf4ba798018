// The extensions of one run: the settings the options beyond the listing's
// own give, and the tables they load. The driver owns one for the run; the
// context points at its settings from the first extension option to the
// end of the run, and at nothing otherwise, so that a run without them
// takes the listing's plain road.
#pragma once

#include "oids/oid_names.h"
#include "runtime/extensions.h"

struct RunContext;

class RunExtensionsScope {
public:
    explicit RunExtensionsScope(RunContext* context);
    ~RunExtensionsScope();
    RunExtensionsScope(const RunExtensionsScope&) = delete;
    RunExtensionsScope& operator=(const RunExtensionsScope&) = delete;

    // The settings, which the context points at from now on.
    RunExtensions& settings();
    // -oids: the built-in names, and those of any -oidfile.
    void nameOids();
    // -oidfile: the names of the file at `path`, then -oids. A file that
    // can't be read or holds a malformed line is told on standard error
    // (its name and line) and ends the run with kOidFileStatus.
    void loadOidFile(const char* path);

private:
    RunContext* context_;
    const RunExtensions* saved_;
    RunExtensions settings_;
    OidNames oidNames_;
};
