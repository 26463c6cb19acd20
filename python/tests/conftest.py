"""What all tests need of the process that runs them."""

import signal


def pytest_configure():
    # A script in the background ignores Ctrl-C, and what it starts inherits that.
    signal.signal(signal.SIGINT, signal.default_int_handler)
