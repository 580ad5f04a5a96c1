# Warnings are on for every target of the project; CI turns them into errors.
function(tnl_enable_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(TNL_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
