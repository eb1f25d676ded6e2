#include "trace/trace.h"
