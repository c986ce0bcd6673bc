"""Prints the SHA-256 of each file named; a dot is shown for every moment that takes."""
import sys
import time

import native
from veltor.common import OutOfRangeException


def progress():
    print(".", end="", flush=True)
    time.sleep(0.02)


try:
    index = 0
    while True:
        print(native.application_class(index))
        index += 1
except OutOfRangeException as error:
    print(f"{index} classes: {error}")

for path in sys.argv[1:]:
    digest = native.digest(path, progress)
    print(f"\n{digest}  {path}")
