# In place of CMake's own: without a compiler, the answer is no.
function(check_cxx_source_compiles)
endfunction()
