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

# A test executable that runs against a database: each of its test cases is registered twice,
# `Suite.Case.sqlite` and `Suite.Case.pg`, so that a failure names its case and engine. The
# PostgreSQL cases depend on the throwaway cluster fixture, whose endpoint file the test support
# knows from the build. (Discovered tests take one value per property: labels `db_sqlite`/`db_pg`, so
# `-L sqlite`, `-L pg` and `-L db` all select.)
function(orvo_add_db_test target)
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST TEST_SUFFIX .sqlite
        PROPERTIES ENVIRONMENT "ORVO_TEST_ENGINE=sqlite" LABELS db_sqlite TIMEOUT 600)
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST TEST_SUFFIX .pg
        PROPERTIES ENVIRONMENT "ORVO_TEST_ENGINE=pg" LABELS db_pg TIMEOUT 600
                   FIXTURES_REQUIRED orvo_pg)
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
