// A failure as the objects have it that are written for a program.
#pragma once

#include "failure.h"
#include "names.h"
#include "standard_output.h"

namespace tympan::tool {

/// Its `error`, a text, and its `code`, which may be null.
inline Json AsJson(const FileFailure& failure)
{
    return { { "error", WithReplacements(failure.WhatHappened()) },
             { "code", NumberOrNull(failure.Code()) } };
}

} // namespace tympan::tool
