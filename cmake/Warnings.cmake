# SPDX-License-Identifier: GPL-3.0-or-later
# The project's own targets are built with these warnings in every build type,
# through lw_warnings(), so that third-party headers keep their own settings.
# LW_WERROR makes them errors; scripts/test and CI turn it on, a plain build
# (a packager's, another compiler's) only reports them.
option(LW_WERROR "Treat the warnings of the project's own code as errors" OFF)

function(lw_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic
        -Wno-missing-field-initializers)
    if(LW_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
