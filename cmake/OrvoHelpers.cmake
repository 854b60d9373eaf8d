# Adds every direct sub-folder that has a CMakeLists.txt, so an area only has to exist to be built.
function(orvo_add_subdirectories)
    file(GLOB children LIST_DIRECTORIES true RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}
         ${CMAKE_CURRENT_SOURCE_DIR}/*)
    list(SORT children)
    foreach(child IN LISTS children)
        if(IS_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/${child}
           AND EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${child}/CMakeLists.txt)
            add_subdirectory(${child})
        endif()
    endforeach()
endfunction()

# A test executable that needs no database: registered once.
function(orvo_add_plain_test target)
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST
        PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" LABELS "plain" TIMEOUT 300)
endfunction()

# A test executable that runs against a database: registered twice, once per engine.
# The PostgreSQL run depends on the throwaway cluster fixture.
function(orvo_add_db_test target)
    add_test(NAME ${target}.sqlite COMMAND ${target})
    set_tests_properties(${target}.sqlite PROPERTIES
        ENVIRONMENT "ORVO_TEST_ENGINE=sqlite;QT_QPA_PLATFORM=offscreen"
        LABELS "db;sqlite" TIMEOUT 1200)
    add_test(NAME ${target}.pg COMMAND ${target})
    set_tests_properties(${target}.pg PROPERTIES
        ENVIRONMENT "ORVO_TEST_ENGINE=pg;QT_QPA_PLATFORM=offscreen;ORVO_TEST_PG_FILE=${ORVO_TEST_PG_FILE}"
        LABELS "db;pg" TIMEOUT 1200 FIXTURES_REQUIRED orvo_pg)
endfunction()

# Test sources are gathered from an area's folders first, and its executable is made only when
# there is something to run.
function(orvo_test_sources target)
    foreach(f IN LISTS ARGN)
        get_filename_component(abs ${f} ABSOLUTE BASE_DIR ${CMAKE_CURRENT_SOURCE_DIR})
        set_property(GLOBAL APPEND PROPERTY ORVO_TEST_SOURCES_${target} ${abs})
    endforeach()
endfunction()

function(orvo_test_has_sources target out)
    get_property(srcs GLOBAL PROPERTY ORVO_TEST_SOURCES_${target})
    if(srcs)
        set(${out} TRUE PARENT_SCOPE)
    else()
        set(${out} FALSE PARENT_SCOPE)
    endif()
endfunction()
