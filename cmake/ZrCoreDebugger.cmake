# Writes zrcore_gdb.py and zrcore_lldb.py as they are installed. Each is one file, because gdb loads no other file with
# it. It consists of the decoder and the script for one debugger, without the lines that import one from the other.
#
# gdb runs all scripts with the same global names. So the file for gdb runs its code with global names of its own.

set(before_gdb "exec(compile(r'''")
set(after_gdb "''', 'zrcore_gdb.py', 'exec'), {'__name__': 'zrcore_gdb'})\n")
foreach(debugger IN ITEMS gdb lldb)
  set(script "")
  foreach(part IN ITEMS decoder ${debugger})
    set(file "${CMAKE_CURRENT_LIST_DIR}/../debugger/zrcore_${part}.py")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    file(READ "${file}" text)
    string(REGEX REPLACE "[^\n]*# not in the installed file\n" "" text "${text}")
    string(APPEND script "${text}\n\n")
  endforeach()
  file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/zrcore_${debugger}.py" "${before_${debugger}}${script}${after_${debugger}}")
endforeach()
