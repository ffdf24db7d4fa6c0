"""What the tests of the packages share."""

import subprocess


def run(*command, **options):
    """What it printed; a test fails when it did not end well."""
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))} gave {done.returncode}:\n{done.stdout}")
    return done.stdout
