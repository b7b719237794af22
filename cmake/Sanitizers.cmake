# VX_SANITIZE=address,undefined (or thread) instruments everything; the first finding ends the program.
if(VX_SANITIZE)
  add_compile_options(-fsanitize=${VX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VX_SANITIZE})
endif()
