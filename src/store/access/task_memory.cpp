#include "store/access/task_memory.h"
