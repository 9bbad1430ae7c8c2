# Run by cpack before it packs: without this program CPack makes, with a remark, a package that depends on nothing.
find_program(SHLIBDEPS dpkg-shlibdeps)
if(NOT SHLIBDEPS)
    message(FATAL_ERROR "dpkg-shlibdeps is missing, which finds what the package depends on; "
                        "install it with: scripts/setup.sh dpkg-dev")
endif()
