#include "htcore/templates/template.h"
#include "htcore/templates/template_functions.h"
#include "templates/template_internal.h"

namespace ht {

namespace {
thread_local THtTemplateContext* t_current = nullptr;
}

THtTemplateContext* HtCurrentTemplateContext() noexcept { return t_current; }

namespace detail {

TCurrentTemplateContext::TCurrentTemplateContext(THtTemplateContext* C) noexcept : FSaved(t_current) {
  t_current = C;
}
TCurrentTemplateContext::~TCurrentTemplateContext() { t_current = FSaved; }

} // namespace detail

} // namespace ht
