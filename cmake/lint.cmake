# The target lint: each check of each file leaves a stamp, and is made again only when what it looked at has changed.

set(stamps ${CMAKE_BINARY_DIR}/stamps)
set(sources ${CMAKE_SOURCE_DIR}/install/pc/winnt/msi)
file(GLOB_RECURSE library CONFIGURE_DEPENDS install/*.cpp)
file(GLOB_RECURSE programs CONFIGURE_DEPENDS bench/*.cpp tests/*.cpp tools/*.cpp)
file(GLOB_RECURSE parts CONFIGURE_DEPENDS package/*.cpp)
file(GLOB_RECURSE headers CONFIGURE_DEPENDS install/*.h install/*.inc bench/*.h tests/*.h tests/*.inc)
file(GLOB_RECURSE python CONFIGURE_DEPENDS bench/*.py catalogue/*.py tests/*.py tools/*.py)

# What the host compiles.
set(compiled "")
foreach(target zqviwicn_actions host_tests)
  get_target_property(files ${target} SOURCES)
  get_target_property(folder ${target} SOURCE_DIR)
  list(TRANSFORM files PREPEND ${folder}/)
  list(APPEND compiled ${files})
endforeach()

set(all "")
# add_check(NAME FILE COMMAND... [DEPENDS...] [DEPFILE...]): the command leaves the stamp NAME of the file.
function(add_check name file)
  file(RELATIVE_PATH relative ${CMAKE_SOURCE_DIR} ${file})
  set(stamp ${stamps}/${relative}.${name})
  cmake_path(GET stamp PARENT_PATH folder)
  file(MAKE_DIRECTORY ${folder})
  add_custom_command(
    OUTPUT ${stamp}
    ${ARGN}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    COMMENT "${name} ${relative}"
    VERBATIM)
  set(all ${all} ${stamp} PARENT_SCOPE)
endfunction()

foreach(file IN LISTS library programs parts headers)
  add_check(clang-format ${file} COMMAND clang-format --dry-run -Werror ${file}
            DEPENDS ${file} ${CMAKE_SOURCE_DIR}/.clang-format)
endforeach()
foreach(file IN LISTS python)
  add_check(
    py_compile ${file}
    COMMAND ${CMAKE_COMMAND} -E env PYTHONPYCACHEPREFIX=${CMAKE_BINARY_DIR}/python ${Python3_EXECUTABLE} -m py_compile
            ${file}
    DEPENDS ${file})
endforeach()

# The analysers read how CMake compiles each file: without sanitizers, whose options Clang does not all know. cppcheck
# sees what Windows runs as Windows compiles it, too. Two files of the library are for Windows only.
set(include_folders -I${sources} -I${CMAKE_BINARY_DIR}/install/pc/winnt/msi)
set(suppressions ${CMAKE_SOURCE_DIR}/tools/cppcheck-suppressions.txt)
set(tidy COMMAND clang-tidy --quiet --extra-arg=-fno-caret-diagnostics)
set(cppcheck COMMAND cppcheck --quiet --error-exitcode=1 --std=c++20 --enable=warning,performance,portability,style
             --suppressions-list=${suppressions})
set(as_host --project=${CMAKE_BINARY_DIR}/compile_commands.json --library=googletest)
set(as_windows --platform=win32A -D_WIN32 --library=windows,googletest ${include_folders})
set(configuration ${CMAKE_SOURCE_DIR}/.clang-tidy ${suppressions})
foreach(file IN LISTS library)
  set(compiler ${CMAKE_CXX_COMPILER})
  set(checks ${tidy} -p ${CMAKE_BINARY_DIR} ${file} ${cppcheck} ${as_windows} ${file})
  if(file MATCHES "platform/own_module.cpp|zqviwicn/dll_main.cpp")
    set(compiler i686-w64-mingw32-g++-win32)
    set(checks ${tidy} ${file} -- --target=i686-w64-mingw32 -std=c++20 ${include_folders} ${cppcheck} ${as_windows}
               ${file})
  elseif(file IN_LIST compiled)
    list(APPEND checks ${cppcheck} ${as_host} --file-filter=${file})
  endif()
  # What the file includes, the compiler says.
  file(RELATIVE_PATH relative ${CMAKE_SOURCE_DIR} ${file})
  set(list ${stamps}/${relative}.d)
  add_check(
    analysis ${file}
    COMMAND ${compiler} -std=c++20 ${include_folders} -MM -MT ${stamps}/${relative}.analysis -MF ${list} ${file}
    ${checks}
    DEPENDS ${file} ${configuration}
    DEPFILE ${list})
endforeach()
foreach(file IN LISTS programs)
  set(checks ${cppcheck} ${as_windows} ${file})
  if(file IN_LIST compiled)
    set(checks ${cppcheck} ${as_host} --file-filter=${file})
  endif()
  add_check(analysis ${file} ${checks} DEPENDS ${file} ${headers} ${configuration})
endforeach()

add_custom_target(lint DEPENDS ${all})
