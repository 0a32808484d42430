// This program does nothing. callgrind runs it to count the instructions of loading the linked
// libraries.
int main() {}
