# One INTERFACE target carries the language standard, the warnings and Qt's
# strictness defines; every library, program, test and benchmark links it.
add_library(trunkdesk_options INTERFACE)
target_compile_features(trunkdesk_options INTERFACE cxx_std_20)
target_compile_options(trunkdesk_options INTERFACE
  $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall -Wextra -Wpedantic -Wno-missing-field-initializers>)
target_compile_definitions(trunkdesk_options INTERFACE
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
  QT_NO_URL_CAST_FROM_STRING
  QT_USE_QSTRINGBUILDER)

# A module below the screens links Qt Core, Network and Sql only. This helper
# adds a static library and refuses Gui/Widgets in its link line at configure time.
function(trunkdesk_logic_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC trunkdesk_options ${ARG_DEPENDS})
  foreach(dep IN LISTS ARG_DEPENDS)
    if(dep MATCHES "Qt6?::(Gui|Widgets|Multimedia|MultimediaWidgets)")
      message(FATAL_ERROR "${name} is a logic module and must not link ${dep}")
    endif()
  endforeach()
endfunction()
