# What every target of this project is compiled with; each links it privately, nothing is global.
add_library(vxs_build_flags INTERFACE)
target_compile_features(vxs_build_flags INTERFACE cxx_std_17)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    # A fused multiply-add rounds once where the code rounds twice, so that the same recording would
    # give other landmarks on another processor. No result depends on errno, and loops that call the
    # mathematics functions vectorise without it.
    target_compile_options(vxs_build_flags INTERFACE -ffp-contract=off -fno-math-errno)
    target_compile_options(vxs_build_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(VXS_MULTIVERSIONING AND NOT VXS_SANITIZED)
        target_compile_definitions(vxs_build_flags INTERFACE VXS_MULTIVERSIONING)
    endif()
    if(VXS_WARNINGS_AS_ERRORS)
        target_compile_options(vxs_build_flags INTERFACE -Werror)
    endif()
endif()
