# The library's sources, folder by folder. The list is explicit so that a file joins the build
# by a decision, and the platform folder is chosen by operating system; the check at the end
# refuses a source file that no list names.

set(ORVO_SOURCES_AUTOMATION
    src/automation/call.cpp
    src/automation/invoke.cpp)

set(ORVO_SOURCES_DESKTOP
    src/desktop/TimerObject.cpp
    src/desktop/VisualUtilities.cpp
    src/desktop/clipboard.cpp)

set(ORVO_SOURCES_ERRORS
    src/errors/error_dialog.cpp
    src/errors/error_reporter.cpp
    src/errors/error_reports.cpp)

set(ORVO_SOURCES_FILES
    src/files/FileSubs.cpp
    src/files/HugeTextFile.cpp
    src/files/RecursiveFileLister.cpp
    src/files/background_writer.cpp
    src/files/documents.cpp
    src/files/encoding.cpp
    src/files/fileutils.cpp
    src/files/install_dir.cpp
    src/files/line_count.cpp
    src/files/log.cpp
    src/files/system_dirs.cpp
    src/files/text_conversion.cpp
    src/files/textfiles.cpp
    src/files/textio.cpp)

set(ORVO_SOURCES_FRAME
    src/frame/collection.cpp
    src/frame/desktop.cpp
    src/frame/error.cpp
    src/frame/event_loop.cpp
    src/frame/library_info.cpp
    src/frame/parent_app.cpp
    src/frame/packed_strings.cpp
    src/frame/safe_array.cpp
    src/frame/state.cpp
    src/frame/trace.cpp
    src/frame/traps.cpp
    src/frame/types.cpp
    src/frame/user_interface.cpp
    src/frame/variant.cpp)

set(ORVO_SOURCES_PLATFORM_EMULATION
    src/platform/emulation/cpu_features.cpp
    src/platform/emulation/icu_codepages.cpp
    src/platform/emulation/last_error.cpp
    src/platform/emulation/locale_data.cpp
    src/platform/emulation/locale_info.cpp
    src/platform/emulation/wildcard.cpp
    src/platform/emulation/windows_codepages.cpp
    src/platform/emulation/windows_locale_facts.cpp)

set(ORVO_SOURCES_RESOURCES
    src/resources/FactoryMethods.cpp
    src/resources/ResourceManager.cpp
    src/resources/catalogue.cpp
    src/resources/pe_strings.cpp
    src/resources/satellite_loader.cpp)

set(ORVO_SOURCES_RUNTIME
    src/runtime/calendar.cpp
    src/runtime/convert.cpp
    src/runtime/date_text.cpp
    src/runtime/dates.cpp
    src/runtime/decimal.cpp
    src/runtime/errors.cpp
    src/runtime/format.cpp
    src/runtime/format_date.cpp
    src/runtime/format_number.cpp
    src/runtime/numbers.cpp
    src/runtime/strings.cpp)

set(ORVO_SOURCES_SETTINGS
    src/settings/INI.cpp
    src/settings/app_ini.cpp
    src/settings/ini_values.cpp
    src/settings/profile.cpp
    src/settings/profile_cache.cpp
    src/settings/profile_document.cpp)

set(ORVO_SOURCES_SYSTEM
    src/system/SpreadsheetApplication.cpp
    src/system/SystemUtilities.cpp
    src/system/locale_lists.cpp
    src/system/locale_queries.cpp
    src/system/processes.cpp
    src/system/spreadsheet.cpp)

set(ORVO_SOURCES_TEXT
    src/text/MathsUtilities.cpp
    src/text/StringUtilities.cpp
    src/text/ansi_length.cpp
    src/text/booleans.cpp
    src/text/character_sets.cpp
    src/text/collections.cpp
    src/text/compare.cpp
    src/text/expand.cpp
    src/text/keypress.cpp
    src/text/line_breaks.cpp
    src/text/line_scan.cpp
    src/text/maths.cpp
    src/text/numbers.cpp
    src/text/path_compact.cpp
    src/text/paths.cpp
    src/text/quotes.cpp
    src/text/words.cpp)

# The system calls: one folder per operating system, each implementing src/platform/*.hpp.
if(UNIX)
  set(ORVO_PLATFORM_OS_DIR src/platform/posix)
  set(ORVO_SOURCES_PLATFORM_OS
      src/platform/posix/calc.cpp
      src/platform/posix/change_monitor.cpp
      src/platform/posix/child_streams.cpp
      src/platform/posix/command_line.cpp
      src/platform/posix/debug_output.cpp
      src/platform/posix/file.cpp
      src/platform/posix/open_file.cpp
      src/platform/posix/process.cpp
      src/platform/posix/replacement.cpp
      src/platform/posix/shell.cpp
      src/platform/posix/system_locale.cpp
      src/platform/posix/system_paths.cpp
      src/platform/posix/thread.cpp
      src/platform/posix/tool_checks.cpp
      src/platform/posix/waitable_timer.cpp
      src/platform/posix/whole_file.cpp
      src/platform/posix/x11_clipboard.cpp
      src/platform/posix/x11_connection.cpp
      src/platform/posix/x11_desktop.cpp
      src/platform/posix/x11_keys.cpp)
else()
  message(FATAL_ERROR "ORVOGeneric has no platform layer for ${CMAKE_SYSTEM_NAME} yet (src/platform/posix is the only one)")
endif()

set(ORVO_SOURCES
    ${ORVO_SOURCES_AUTOMATION}
    ${ORVO_SOURCES_DESKTOP}
    ${ORVO_SOURCES_ERRORS}
    ${ORVO_SOURCES_FILES}
    ${ORVO_SOURCES_FRAME}
    ${ORVO_SOURCES_PLATFORM_EMULATION}
    ${ORVO_SOURCES_RESOURCES}
    ${ORVO_SOURCES_RUNTIME}
    ${ORVO_SOURCES_SETTINGS}
    ${ORVO_SOURCES_SYSTEM}
    ${ORVO_SOURCES_TEXT}
    ${ORVO_SOURCES_PLATFORM_OS})

# Every source outside the operating-system folders must be in a list above.
file(GLOB_RECURSE _orvo_found RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/src/*.cpp)
list(FILTER _orvo_found EXCLUDE REGEX "^src/platform/(posix|win32)/")
# The Qt module is a library of its own, listed in its folder.
list(FILTER _orvo_found EXCLUDE REGEX "^src/qt/")
list(APPEND _orvo_found ${ORVO_SOURCES_PLATFORM_OS})
set(_orvo_unlisted ${_orvo_found})
list(REMOVE_ITEM _orvo_unlisted ${ORVO_SOURCES})
if(_orvo_unlisted)
  message(FATAL_ERROR "Sources not in cmake/sources.cmake: ${_orvo_unlisted}")
endif()
list(TRANSFORM ORVO_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/)
