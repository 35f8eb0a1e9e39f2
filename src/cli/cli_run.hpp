// The whole command: reads the command line and runs the subcommand on it; gives the exit code.
#pragma once

int cli_run(int argc, char **argv);
