# SPDX-License-Identifier: GPL-3.0-or-later
# Warnings are errors in the project's own code. Applied per target through
# lw_warnings() so that third-party headers keep their own settings.
function(lw_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror -Wno-missing-field-initializers)
endfunction()
