#!/bin/sh
# gcov without the branches that were never reached: for these it does not say
# which belong to exceptions only. The line or the branch in front of such a
# branch counts as missed anyway.
gcov "$@" || exit
find . -maxdepth 1 -name '*.gcov' -exec sed -i '/^branch .* never executed/d' {} +
