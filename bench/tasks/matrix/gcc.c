#include <stdio.h>

static double a[13][13], b[13][13], p[13][13];

int main(void) {
    const int r = 100000;
    double c = 0;
    for (int k = 0; k < r; k++) {
        for (int i = 1; i <= 12; i++) {
            for (int j = 1; j <= 12; j++) {
                a[i][j] = i + j;
                b[i][j] = i - j;
            }
        }
        for (int i = 1; i <= 12; i++) {
            for (int j = 1; j <= 12; j++) {
                double s = 0;
                for (int l = 1; l <= 12; l++) s += a[i][l] * b[l][j];
                p[i][j] = s;
            }
        }
        c = 0;
        for (int i = 1; i <= 12; i++) c += p[i][i] + p[i][13 - i];
    }
    printf("CHECK %.0f\nREPEATED %d\n", c, r);
}
