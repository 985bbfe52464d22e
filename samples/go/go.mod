module setup

go 1.19
