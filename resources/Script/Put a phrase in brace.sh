#!/bin/sh -c
# Puts the selection between braces: "text" becomes "{text}".
# The selection arrives on standard input; what the script prints replaces it.
printf '{'
cat
printf '}'
