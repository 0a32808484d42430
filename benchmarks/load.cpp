// This program does nothing: valgrind's callgrind counts the cost of loading its libraries.
int main() {}
