# Run paths: where an installed library, module or program finds libtsruntime.so and the
# modules beside it, relative to itself ($ORIGIN), in the build tree and once installed.
#
# Left to itself CMake links a build-tree path and rewrites it on installation, padding
# the build value with empty entries to make room: each empty entry is the current
# folder, searched for every dependency. Here targets are linked with their final,
# relative run path and nothing is rewritten; where the build tree's layout differs
# from the installed one, the build tree's entry is dropped on installation.
#
#   tsruntime_runpath(<target> <installed folder, relative to the prefix> <component>)
#
# Call it after the target's install() rule.
function(tsruntime_runpath target installed_dir component)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    get_target_property(built_dir ${target} RUNTIME_OUTPUT_DIRECTORY)
  else()
    get_target_property(built_dir ${target} LIBRARY_OUTPUT_DIRECTORY)
  endif()
  if(NOT built_dir)
    set(built_dir ${CMAKE_CURRENT_BINARY_DIR})
  endif()
  file(RELATIVE_PATH built_to_lib ${built_dir} ${PROJECT_BINARY_DIR})
  file(RELATIVE_PATH installed_to_lib /prefix/${installed_dir} /prefix/${CMAKE_INSTALL_LIBDIR})
  string(REGEX REPLACE "/$" "" built_to_lib "${built_to_lib}")
  string(REGEX REPLACE "/$" "" installed_to_lib "${installed_to_lib}")
  set(installed "$ORIGIN")
  if(installed_to_lib)
    string(APPEND installed "/${installed_to_lib}")
  endif()
  set(built "$ORIGIN")
  if(built_to_lib)
    string(APPEND built "/${built_to_lib}")
  endif()
  set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
  if(built STREQUAL installed)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "${installed}")
    return()
  endif()
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${installed};${built}")
  install(CODE "file(RPATH_SET
    FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${installed_dir}/$<TARGET_FILE_NAME:${target}>\"
    NEW_RPATH \"${installed}\")" COMPONENT ${component})
endfunction()
