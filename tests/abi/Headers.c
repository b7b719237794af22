/* All public headers in one C program, the way an application or a filter written in C sees them. */
#include <vx/inspect.h>
#include <vx/verify.h>
#include <vx/vx.h>
#include <vxkrn.h>

typedef int (*Entry)(_LOADDISPATCH*);
extern Entry UsesBoth(const vx_load_options* options);

Entry UsesBoth(const vx_load_options* options) {
  const vx_load_options defaults = VX_LOAD_OPTIONS_DEFAULT;
  return options != NULL && options->page == defaults.page ? fltLoad : NULL;
}
