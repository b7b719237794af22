/* The resizer's own code, so that the sanitizers see into it: the system's library of it is not built for
 * them. */
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#include <stb/stb_image_resize.h>
