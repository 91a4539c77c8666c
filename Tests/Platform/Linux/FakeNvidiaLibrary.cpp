// A management library with one card at 0000:01:00.0 that counts how often it was started and stopped.

extern "C" {

int startedTimes = 0;
int runningNow = 0;

struct Card;
struct Utilization {
  unsigned gpu, memory;
};
struct Memory {
  unsigned long long total, free, used;
};

int nvmlInit_v2() {
  ++startedTimes;
  return runningNow++;
}
int nvmlShutdown() { return --runningNow; }
int nvmlDeviceGetHandleByPciBusId_v2(const char* address, Card** card) {
  *card = reinterpret_cast<Card*>(&startedTimes);
  return address[6] == '1' ? 0 : 6; // not found
}
int nvmlDeviceGetUtilizationRates(Card* card, Utilization* into) {
  *into = {42, 7};
  return card ? 0 : 2;
}
int nvmlDeviceGetMemoryInfo(Card* card, Memory* into) {
  *into = {8ull << 30, 5ull << 30, 3ull << 30};
  return card ? 0 : 2;
}
int nvmlDeviceGetTemperature(Card* card, int sensor, unsigned* into) {
  *into = 51;
  return card && sensor == 0 ? 0 : 2;
}
}
