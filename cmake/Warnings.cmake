# Warnings are always on; they turn into errors only where VELMORA_WERROR asks (CI).
function(velmora_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                           -Wno-sign-conversion)
  if(VELMORA_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
