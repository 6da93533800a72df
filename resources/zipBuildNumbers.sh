#!/bin/sh
# Packs the folder $1 into the document $2.
cd -- "$1" && exec zip -q -X -r "$2" .
