#include "base/CList.h"
