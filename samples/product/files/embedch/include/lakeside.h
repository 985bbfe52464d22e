#ifndef LAKESIDE_H
#define LAKESIDE_H

double shore_length(double radius, int bays);

#endif
