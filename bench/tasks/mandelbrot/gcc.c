#include <stdio.h>

int main(void) {
    const int r = 10000;
    int c = 0;
    for (int k = 0; k < r; k++) {
        c = 0;
        for (int y = 0; y <= 15; y++) {
            double b = y / 8.0 - 1;
            for (int x = 0; x <= 23; x++) {
                double a = x / 8.0 - 2;
                double u = 0, v = 0, p = 0, q = 0;
                int i = 0;
                while (i < 30 && p + q <= 4) {
                    v = 2 * u * v + b;
                    u = p - q + a;
                    p = u * u;
                    q = v * v;
                    i++;
                }
                c += i;
            }
        }
    }
    printf("CHECK %d\nREPEATED %d\n", c, r);
}
