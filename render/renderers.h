// The table of universal tags that have a readable form.
#pragma once

#include "render/contents.h"

// The row of a universal tag from 0 to 36.
const ContentsRenderer& contentsRenderer(int tag);
