#include "support/testbed.h"
