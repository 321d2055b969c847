#include <stdio.h>

static short f[2001];

int main(void) {
    const int r = 10000;
    int c = 0;
    for (int k = 0; k < r; k++) {
        c = 0;
        for (int i = 0; i <= 2000; i++) f[i] = 1;
        for (int i = 0; i <= 2000; i++) {
            if (f[i] == 0) continue;
            int p = i + i + 3;
            for (int j = i + p; j <= 2000; j += p) f[j] = 0;
            c++;
        }
    }
    printf("CHECK %d\nREPEATED %d\n", c, r);
}
