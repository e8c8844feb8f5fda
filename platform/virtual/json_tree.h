// json_tree.h - a JSON text as a tree that knows the line of everything, so that a scenario's mistakes can be named.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

enum VS_NODE_KIND {
    VS_NODE_NULL,
    VS_NODE_FLAG,
    VS_NODE_INTEGER,
    VS_NODE_REAL,
    VS_NODE_TEXT,
    VS_NODE_OBJECT,
    VS_NODE_ARRAY
};

struct VS_NODE_T {
    VS_NODE_KIND kind = VS_NODE_NULL;
    int line = 1;
    std::string key; // of a member; of an array's element "members[2]", from 1
    bool flag = false;
    int64_t integer = 0; // also of a real without fraction, whose kind then is VS_NODE_INTEGER
    double real = 0;     // also of an integer
    std::string text;
    std::vector<VS_NODE_T> items; // members or elements, in the order of the text
};

// "" and the tree; or "<name>:<line>: <key>: <what was expected>" for a text that is not JSON, nests more than 16 deep,
// or gives a key twice in one object.
std::string vsJsonParse(const std::string &json, const std::string &name, VS_NODE_T &root);
