#include "host/host.h"
