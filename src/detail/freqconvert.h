#pragma once

// Moved to the receiver layer; kept so that older includes still build.
#include "receivers/frequency.h"
