function(htcore_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
endfunction()
