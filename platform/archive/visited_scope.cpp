#include "platform/archive/visited_scope.h"

namespace detail {

__thread VisitedScope* VisitedScope::innermost = nullptr;

} // namespace detail
