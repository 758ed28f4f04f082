#include <iostream>

int main() {
  std::cerr << "corvanet-demo-service: not built yet\n";
  return 2;
}
