#include "bench/harness.h"

bench::Runner::~Runner() = default;
