# What every build for users has: a fault in memory ends the program instead of handing it over. Sanitizers find more and
# want neither. FORTIFY needs optimisation. Tests read all of it back from the built files (tests/hardening_test.py).
if(LUMETRA_SANITIZE)
  return()
endif()
set(executable "$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>")
# -fPIE and not the property: that one compiles libraries as -fPIC, which reaches globals through a table.
add_compile_options(-fPIE -fstack-protector-strong
  "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>" "$<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>")
add_link_options("$<${executable}:SHELL:-fPIE -pie>" "LINKER:-z,relro,-z,now,-z,noexecstack")
