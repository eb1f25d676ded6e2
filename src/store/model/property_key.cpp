#include "store/model/property_key.h"
