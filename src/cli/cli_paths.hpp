// Which file a path leads to, whatever it is called.
#pragma once

#include <string>
#include <vector>

// The path that symbolic links lead to, whether there is a file or not. Fails on a link that is not to be followed: in
// a folder where everybody may put links, that of somebody who is neither the user nor the folder's owner.
std::string cli_behind_links(const std::string &path);

// Refuses an output that is one of the inputs. "-" is standard input among the inputs, and never refused as output.
void cli_keep_inputs(const std::string &output, const std::vector<std::string> &inputs);

// The same for several outputs, of which no two may be one. "" is none.
void cli_keep_apart(std::vector<std::string> outputs, const std::vector<std::string> &inputs);
