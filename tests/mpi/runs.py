"""Runs of zox-mip-mpi for the tests."""
import os
import subprocess

ENVIRONMENT = {**os.environ, "OMPI_ALLOW_RUN_AS_ROOT": "1", "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1"}
failed = 0


def mpirun(ranks, *command, **options):
    return subprocess.run(["mpirun", "--oversubscribe", "-n", str(ranks), *map(str, command)], capture_output=True,
                          text=True, env=ENVIRONMENT, timeout=600, **options)


def expect(condition, what):
    global failed
    if not condition:
        failed += 1
        print(f"FAILED {what}", flush=True)


def own_lines(done):
    """What the program said, without mpirun's own report of how ranks ended."""
    return [line for line in done.stderr.splitlines() if line.startswith("zox-mip-mpi:")]
