"""So that ``python -m volux.tool`` is the command `volux`."""

import sys

from volux.tool._cli import main

if __name__ == "__main__":
    sys.exit(main())
