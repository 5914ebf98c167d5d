#pragma once

#include "BackgroundDesign.h"

#include <vector>

// Every picture we ship, in the order the application lists them. The ids
// and file names must match the application's table of bundled backgrounds.
const std::vector<BackgroundDesign>& designs();
