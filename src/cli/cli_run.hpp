// The whole program: reads the command line and runs the command that it names; gives the exit code.
#pragma once

int cli_run(int argc, char **argv);
