// The witness library of the host kit: a function with every record of zrhost/host.h by value. zrcore_witness.cpp says
// what a witness is for.

#include "zrhost/host.h"

#define USE_BY_VALUE(Record) \
  Record Pass##Record(Record record) { return record; }

USE_BY_VALUE(ZrHostClass)
USE_BY_VALUE(ZrHostInterface)
USE_BY_VALUE(ZrHostProblem)
