/* A library with only one of the entry points that a filter has. */
__attribute__((visibility("default"))) int fltInfo(void* dispatch);

int fltInfo(void* dispatch) {
  return dispatch != 0;
}
