#include "Formula.h"
